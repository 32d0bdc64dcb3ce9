# find_package(KelvarRig): the targets kelvarrig::kr (the harness), krmain (its entry point), vk and vkc (what suites of the
# Vek library stand on), vekcore, veks, veksc (that library), and kelvarrig_add_rig().
include("${CMAKE_CURRENT_LIST_DIR}/KelvarRigTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/KelvarRigAddRig.cmake")
