# Imported targets for another implementation of the Vek library: VEK_ROOT/include and VEK_ROOT/lib.
foreach(object vekcore veks veksc)
  find_library(${object}_FILE NAMES ${object} PATHS ${VEK_ROOT}/lib NO_DEFAULT_PATH REQUIRED)
  add_library(${object} SHARED IMPORTED GLOBAL)
  set_target_properties(${object} PROPERTIES IMPORTED_LOCATION ${${object}_FILE})
  target_include_directories(${object} INTERFACE ${VEK_ROOT}/include)
endforeach()
