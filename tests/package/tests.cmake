# What scripts/package makes, installed and used.

if(PISTONFIELD_SANITIZE OR PISTONFIELD_USE_CUDA)
  return()
endif()

set(folder ${CMAKE_CURRENT_LIST_DIR})
add_test(NAME package.revision COMMAND ${folder}/revision.sh ${PROJECT_SOURCE_DIR} ${CMAKE_COMMAND})
find_program(NVCC nvcc HINTS /usr/local/cuda/bin)
add_test(NAME package.neighbour COMMAND ${folder}/neighbour.sh ${CMAKE_BINARY_DIR} "${NVCC}")
set_tests_properties(package.neighbour PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)

if(NOT TARGET pistonfield_octave)
  return()
endif()
add_test(NAME package.octave COMMAND ${folder}/octave.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave)
add_test(NAME package.matlab COMMAND ${folder}/matlab.sh ${OCTAVE} ${CMAKE_BINARY_DIR})
add_test(NAME package.fresh_machine COMMAND ${folder}/fresh_machine.sh)
set_tests_properties(package.octave package.matlab PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
set_tests_properties(package.fresh_machine PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 3600)
