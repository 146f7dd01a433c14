# Run by CPack where the files of each package lie before they are packed: adds what Debian asks for.
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} name)
  execute_process(
    COMMAND sh ${CPACK_TESSARY_PACKAGING}/debian_files.sh
      ${CPACK_DEBIAN_${name}_PACKAGE_NAME} ${CPACK_TEMPORARY_DIRECTORY}/${component} ${CPACK_PACKAGE_VERSION}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
