# What other projects need to use the toolkit: headers, libraries, and how CMake and pkg-config find
# them. All of it may be moved to another place after it was installed.
include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/GlutMenu)
file(RELATIVE_PATH prefix_from_pc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" prefix_from_pc ${prefix_from_pc})

function(glutmenu_install target name)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS ${target} EXPORT GlutMenu${name}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT glutmenu)
  install(EXPORT GlutMenu${name} NAMESPACE GlutMenu:: DESTINATION ${package} COMPONENT glutmenu)
endfunction()

# glutmenu_describe(NAME): what pkg-config says.
function(glutmenu_describe name)
  configure_file(${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT glutmenu)
endfunction()

glutmenu_install(glutmenu GlutMenu)
glutmenu_describe(glutmenu)
install(FILES CGlutMenu.h GlutKeys.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/GlutMenu COMPONENT glutmenu)
if(GLUTMENU_KEYS)
  glutmenu_install(glutmenu_keys Keys)
  glutmenu_describe(glutmenu-keys)
endif()

configure_package_config_file(GlutMenuConfig.cmake.in GlutMenuConfig.cmake
  INSTALL_DESTINATION ${package})
write_basic_package_version_file(GlutMenuConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/GlutMenuConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/GlutMenuConfigVersion.cmake
  DESTINATION ${package} COMPONENT glutmenu)
install(DIRECTORY example DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/glutmenu COMPONENT glutmenu)
