# The two Debian packages that ./package makes: one for each component of the installation.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Tessary developers <tessary@example.org>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://tessary.example.org)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL tessary glutmenu)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian_files.cmake)
set(CPACK_TESSARY_PACKAGING ${CMAKE_CURRENT_SOURCE_DIR})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_TESSARY_PACKAGE_NAME tessary)
set(CPACK_DEBIAN_TESSARY_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TESSARY_DESCRIPTION
  "fractal explorer with posters, films and catalogues\nComputes fractals of fourteen formulas in a window, on graphics cards by\nOpenCL and on all cores of the processor. Views are zoomed by dragging, kept\nin catalogues, and glided between.\n\ntessary-render draws posters, films and thumbnails without a window;\n tessary-frac lists, checks and edits catalogues.")
# GTK is loaded for the file panels, and OpenCL's loader looks for devices, when they are needed.
set(CPACK_DEBIAN_TESSARY_PACKAGE_RECOMMENDS "libgtk-3-0t64 | libgtk-3-0, pocl-opencl-icd | opencl-icd")
set(CPACK_DEBIAN_TESSARY_PACKAGE_SUGGESTS "ffmpeg")

set(CPACK_DEBIAN_GLUTMENU_PACKAGE_NAME libglutmenu-dev)
set(CPACK_DEBIAN_GLUTMENU_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_GLUTMENU_PACKAGE_DEPENDS
  "libglut-dev | freeglut3-dev, libgl-dev, libglu1-mesa-dev | libglu-dev, libx11-dev")
set(CPACK_COMPONENT_GLUTMENU_DESCRIPTION
  "menus and dialogs inside a GLUT window\nMenu bars, nested menus and modal dialogs drawn by OpenGL over whatever a\nGLUT program shows. A header and a static library, found by CMake and\npkg-config.")

include(CPack)
