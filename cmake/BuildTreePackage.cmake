# The build tree as a CMake package: -DKelvarRig_DIR=<build tree> lets find_package(KelvarRig) take the harness from here.
set(packaged kr krmain vk)
if(NOT VEK_ROOT)
  list(APPEND packaged vkc vekcore veks veksc)
endif()
export(TARGETS ${packaged} NAMESPACE kelvarrig:: FILE ${PROJECT_BINARY_DIR}/KelvarRigTargets.cmake)
# Its targets are told by their full paths: a copy elsewhere would give the libraries of the original.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/KelvarRigConfig.cmake @ONLY CONTENT
[[file(REAL_PATH "${CMAKE_CURRENT_LIST_DIR}" kelvarrig_here)
file(REAL_PATH "@PROJECT_BINARY_DIR@" kelvarrig_made)
if(NOT kelvarrig_here STREQUAL kelvarrig_made)
  set(KelvarRig_FOUND FALSE)
  set(KelvarRig_NOT_FOUND_MESSAGE
    "${kelvarrig_here} is a copy of the build tree @PROJECT_BINARY_DIR@; configure and build it anew, or install it.")
  return()
endif()
include("@PROJECT_BINARY_DIR@/KelvarRigTargets.cmake")
include("@PROJECT_SOURCE_DIR@/cmake/KelvarRigAddRig.cmake")
]])
