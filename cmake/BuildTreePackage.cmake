# The build tree as a CMake package: -DKelvarRig_DIR=<build tree> lets find_package(KelvarRig) take the harness from here.
set(packaged kr krmain vk)
if(NOT VEK_ROOT)
  list(APPEND packaged vekcore veks veksc)
endif()
export(TARGETS ${packaged} NAMESPACE kelvarrig:: FILE ${PROJECT_BINARY_DIR}/KelvarRigTargets.cmake)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/KelvarRigConfig.cmake @ONLY CONTENT
"include(@PROJECT_BINARY_DIR@/KelvarRigTargets.cmake)
include(@PROJECT_SOURCE_DIR@/cmake/KelvarRigAddRig.cmake)
")
