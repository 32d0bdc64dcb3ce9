# Debian packages: `cpack` in the build tree writes three, of what cmake/Install.cmake installs. What Debian wants beside
# that, cmake/FinishPackages.cmake puts in.
set(KR_PACKAGE_MAINTAINER "The Kelvar Rig authors <kelvar-rig@example.org>" CACHE STRING
  "Name and address that the packages name as their maintainer")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kelvar-rig)
set(CPACK_PACKAGE_VENDOR "The Kelvar Rig authors")
set(CPACK_PACKAGE_CONTACT ${KR_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
  WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL kr_program kr_library kr_development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/FinishPackages.cmake)
set(CPACK_KR_SOURCE ${PROJECT_SOURCE_DIR})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)

set(kr_version ${PROJECT_VERSION})
set(CPACK_DEBIAN_KR_PROGRAM_PACKAGE_NAME kelvar-rig)
set(CPACK_DEBIAN_KR_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_KR_PROGRAM_PACKAGE_DEPENDS "libvek1 (>= ${kr_version})")
set(CPACK_DEBIAN_KR_PROGRAM_DESCRIPTION "clocks per call of speech-coding functions
kelvarrig measures the functions of the Vek library of speech-coding
primitives over grids of parameter values. Its companion krlab compares
builds, keeps results and repeats measurements.")

set(CPACK_DEBIAN_KR_LIBRARY_PACKAGE_NAME libvek1)
set(CPACK_DEBIAN_KR_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_KR_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/vek/symbols ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_KR_LIBRARY_DESCRIPTION "speech-coding primitives
An open implementation of the Vek library: signal kernels, G.729, GSM AMR,
AMR-WB and AMR-WB+, echo cancellation, G.723.1, G.728, G.722, G.722.1, G.726,
G.729.1, a real-time audio codec and GSM full rate.")

set(CPACK_DEBIAN_KR_DEVELOPMENT_PACKAGE_NAME kelvar-rig-dev)
set(CPACK_DEBIAN_KR_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_KR_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_KR_DEVELOPMENT_PACKAGE_DEPENDS "libvek1 (= ${kr_version})")
set(CPACK_DEBIAN_KR_DEVELOPMENT_DESCRIPTION "harness for measuring functions of your own
Headers and archives of the harness behind kelvarrig, for programs that
measure functions of their own, and the headers of the Vek library.")

include(CPack)
