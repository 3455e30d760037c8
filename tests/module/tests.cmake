# Inspects the files of the modules.

if(NOT TARGET pistonfield_octave OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  return()
endif()

# add_module_tests(<suffix of the names> <module> <map of its exports>)
function(add_module_tests suffix target map)
  set(module $<TARGET_FILE:${target}>)
  add_test(NAME module.symbols${suffix} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/symbols.sh ${module}
                                                ${PROJECT_SOURCE_DIR}/src/matlab/${map})
  if(NOT PISTONFIELD_USE_CUDA)
    add_test(NAME module.thread_local${suffix}
             COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/thread_local.sh ${module})
  endif()
  # CUDA's static library uses threads and dlopen, which moved into the C library in version 2.34.
  add_test(NAME module.versions${suffix}
           COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/versions.sh ${module}
                   $<IF:$<BOOL:${PISTONFIELD_USE_CUDA}>,2.34,2.17>)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_test(NAME module.hardened${suffix}
             COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/hardened.sh ${module}
                     $<TARGET_FILE:gauss_legendre>)
  endif()
endfunction()

add_module_tests("" pistonfield_octave exports.map)
add_module_tests(_quiet pistonfield_octave_quiet exports_internal.map)
add_module_tests(_about pistonfield_octave_about exports_internal.map)
add_module_tests(_pressure pistonfield_octave_pressure exports_internal.map)
