# What hosts load, as a file.

if(NOT TARGET pistonfield_octave OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  return()
endif()

set(module $<TARGET_FILE:pistonfield_octave>)
add_test(NAME module.symbols COMMAND ${CMAKE_CURRENT_LIST_DIR}/symbols.sh ${module}
                                     ${PROJECT_SOURCE_DIR}/src/matlab/exports.map)

# CUDA's static library calls threads and dlopen, which moved into the C library with version 2.34.
add_test(NAME module.versions COMMAND ${CMAKE_CURRENT_LIST_DIR}/versions.sh ${module}
                                      $<IF:$<BOOL:${PISTONFIELD_USE_CUDA}>,2.34,2.17>)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_test(NAME module.hardened COMMAND ${CMAKE_CURRENT_LIST_DIR}/hardened.sh ${module}
                                        $<TARGET_FILE:gauss_legendre>)
endif()
