# Run by cpack on the three folders that become packages: what Debian wants of every package is added, and manual pages are
# compressed. Archives of other kinds stay as they are.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
file(STRINGS ${CPACK_KR_SOURCE}/CHANGELOG.md heading REGEX "^## " LIMIT_COUNT 1)
if(NOT heading MATCHES "^## ([0-9.]+), ([0-9]+-[0-9]+-[0-9]+)$" OR NOT CMAKE_MATCH_1 STREQUAL CPACK_PACKAGE_VERSION)
  message(FATAL_ERROR "CHANGELOG.md begins with '${heading}' and not with '## ${CPACK_PACKAGE_VERSION}, <date>'")
endif()
execute_process(COMMAND date -u -R -d ${CMAKE_MATCH_2} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)

foreach(component kr_program kr_library kr_development)
  string(TOUPPER ${component} upper)
  set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  file(WRITE ${root}/doc/${name}/changelog
    "kelvar-rig (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n  * See CHANGELOG.md.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  configure_file(${CPACK_KR_SOURCE}/LICENSE ${root}/doc/${name}/copyright COPYONLY)
  # The licence is there once.
  file(REMOVE ${root}/doc/${name}/LICENSE)
  file(GLOB pages ${root}/man/man*/*.[0-9])
  execute_process(COMMAND gzip -9nf ${root}/doc/${name}/changelog ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
