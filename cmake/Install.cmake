# cmake --install: three components, which are the three packages. Nothing in an installed tree tells where it was built
# or installed, so that it can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The harness' archives and headers have a folder of their own: their names are short.
set(kr_archives ${CMAKE_INSTALL_LIBDIR}/kelvarrig)
set(kr_headers ${CMAKE_INSTALL_INCLUDEDIR}/kelvarrig)
set(kr_documents ${CMAKE_INSTALL_DATADIR}/doc/kelvar-rig)
set(kr_package ${CMAKE_INSTALL_LIBDIR}/cmake/KelvarRig)

# The program and its companion; one that the sanitizers watch is for tests alone.
set(kr_programs kelvarrig)
if(TARGET krlab AND NOT KR_LAB_CHECKED)
  list(APPEND kr_programs krlab)
endif()
install(TARGETS ${kr_programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT kr_program)
if(VEK_ROOT)
  set(kr_rpath ${VEK_ROOT}/lib)
else()
  # In the build tree the libraries lie below the program, beside it when both are installed. CMake would make the shorter
  # path as long as the other by colons, and between colons the loader reads the present directory: so the shorter one
  # steps on the spot until it is as long, and is replaced here.
  file(RELATIVE_PATH kr_to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(kr_installed_rpath "$ORIGIN/${kr_to_libraries}")
  set(kr_rpath "$ORIGIN/lib")
  string(LENGTH ${kr_installed_rpath} kr_length)
  foreach(step RANGE 10 ${kr_length} 2)
    string(REPLACE "/lib" "/./lib" kr_rpath ${kr_rpath})
  endforeach()
  set(kr_program \${CMAKE_INSTALL_PREFIX})
  cmake_path(APPEND kr_program ${CMAKE_INSTALL_BINDIR} kelvarrig)
  install(CODE "file(RPATH_CHANGE FILE \"\$ENV{DESTDIR}${kr_program}\" OLD_RPATH [[${kr_rpath}]] NEW_RPATH [[${kr_installed_rpath}]])"
    COMPONENT kr_program)
endif()
set_target_properties(kelvarrig PROPERTIES INSTALL_RPATH ${kr_rpath} BUILD_WITH_INSTALL_RPATH ON)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/kelvarrig.cfg DESTINATION ${kr_documents}/examples COMPONENT kr_program)
install(FILES README.md CHANGELOG.md SECURITY.md LICENSE DESTINATION ${kr_documents} COMPONENT kr_program)
install(DIRECTORY docs DESTINATION ${kr_documents} COMPONENT kr_program)
# Manual pages and completions, where they have been made.
install(DIRECTORY ${PROJECT_BINARY_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT kr_program OPTIONAL)

# The three libraries.
set(kr_exported kr krmain)
if(NOT VEK_ROOT)
  list(APPEND kr_exported vk vkc)
  install(TARGETS vekcore veks veksc EXPORT KelvarRigTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kr_library NAMELINK_COMPONENT kr_development)
  install(DIRECTORY vek/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT kr_development)
  foreach(target vekcore veks veksc)
    target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  endforeach()
  target_include_directories(vk INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_include_directories(vk INTERFACE $<INSTALL_INTERFACE:${kr_headers}>)
  target_include_directories(vkc INTERFACE $<INSTALL_INTERFACE:${kr_headers}>)
  install(DIRECTORY api/lib/ veksc/src/ DESTINATION ${kr_headers} COMPONENT kr_development FILES_MATCHING PATTERN "*.h")
endif()

# What programs of others are built from.
target_include_directories(kr INTERFACE $<INSTALL_INTERFACE:${kr_headers}>)
install(DIRECTORY api/src/ DESTINATION ${kr_headers} COMPONENT kr_development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.inc")
install(TARGETS ${kr_exported} EXPORT KelvarRigTargets ARCHIVE DESTINATION ${kr_archives} COMPONENT kr_development)
install(EXPORT KelvarRigTargets NAMESPACE kelvarrig:: DESTINATION ${kr_package} COMPONENT kr_development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/installed/KelvarRigConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES cmake/KelvarRigConfig.cmake cmake/KelvarRigAddRig.cmake
  ${PROJECT_BINARY_DIR}/installed/KelvarRigConfigVersion.cmake DESTINATION ${kr_package} COMPONENT kr_development)

# pkg-config: from its own folder to the prefix, and from there on.
set(kr_pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(kr_pc_prefix \${pcfiledir})
string(REGEX REPLACE "[^/]+" ".." kr_up ${kr_pkgconfig})
cmake_path(APPEND kr_pc_prefix ${kr_up})
set(kr_pc_libdir \${prefix})
cmake_path(APPEND kr_pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(kr_pc_includedir \${prefix})
cmake_path(APPEND kr_pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
set(kr_pc_files kelvarrig)
if(NOT VEK_ROOT)
  list(APPEND kr_pc_files vek)
  get_target_property(VEK_VERSION vekcore VERSION)
endif()
foreach(name ${kr_pc_files})
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/installed/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/installed/${name}.pc DESTINATION ${kr_pkgconfig} COMPONENT kr_development)
endforeach()
