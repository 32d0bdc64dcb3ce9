# kelvarrig_add_rig(<name> SOURCES <file>... [LIBRARIES <library>...])
#
# A program that measures functions of your own, registered with kelvarrig.h: the sources, the harness and its entry point,
# and the libraries that hold the functions. Needs the targets kelvarrig::kr and kelvarrig::krmain and nothing else.
#
# Without a build type the sources are compiled with -O2: clocks of code without optimisation say nothing. Beside the program
# lies <name>.cfg with the keys of a run without keys.
function(kelvarrig_add_rig name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "kelvarrig_add_rig(${name}): what is '${arg_UNPARSED_ARGUMENTS}'? It takes SOURCES and LIBRARIES.")
  endif()
  if(NOT arg_SOURCES)
    message(FATAL_ERROR "kelvarrig_add_rig(${name}): no SOURCES")
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_compile_features(${name} PRIVATE cxx_std_20)
  target_compile_options(${name} PRIVATE $<$<CONFIG:>:-O2>)
  target_link_libraries(${name} PRIVATE kelvarrig::krmain ${arg_LIBRARIES} kelvarrig::kr)
  file(GENERATE OUTPUT $<TARGET_FILE_DIR:${name}>/${name}.cfg CONTENT "-B -LPERF -r\n")
endfunction()
