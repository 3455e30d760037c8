# Runs the examples as users do, and checks what they claim.

find_package(Threads REQUIRED)
add_executable(example_threads ${PROJECT_SOURCE_DIR}/examples/cpp/threads.cpp)
target_link_libraries(example_threads PRIVATE pistonfield Threads::Threads)
add_test(NAME examples.threads COMMAND ${CMAKE_CURRENT_LIST_DIR}/threads.sh $<TARGET_FILE:example_threads>)
add_executable(example_array ${PROJECT_SOURCE_DIR}/examples/cpp/array.cpp)
target_link_libraries(example_array PRIVATE pistonfield)
add_test(NAME examples.array COMMAND ${CMAKE_CURRENT_LIST_DIR}/array.sh $<TARGET_FILE:example_array>)
set_tests_properties(examples.threads examples.array PROPERTIES LABELS fast)

if(NOT TARGET pistonfield_octave OR PISTONFIELD_USE_CUDA)
  return()
endif()

# add_example_test(<name> [<program to run first>])
function(add_example_test name)
  add_test(NAME examples.${name}
           COMMAND ${CMAKE_CURRENT_LIST_DIR}/example.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave
                   ${CMAKE_CURRENT_LIST_DIR}/${name}.tst ${ARGN})
  set_tests_properties(examples.${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
endfunction()

foreach(name nearfield order phasedarray clinicalprobe pulse axisresponse pointspread volume design)
  add_example_test(${name})
endforeach()

add_executable(example_field ${PROJECT_SOURCE_DIR}/examples/cpp/field.cpp)
target_link_libraries(example_field PRIVATE pistonfield)
add_example_test(cppfield $<TARGET_FILE:example_field>)

add_test(NAME examples.full_disk
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/full_disk.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave
                 $<TARGET_FILE:example_field> ${PROJECT_SOURCE_DIR}/examples)

# One field computed by several processes, and the script for users to copy.
add_test(NAME examples.mpi
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/mpi.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave)
add_test(NAME examples.shellcheck
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/clean_shell.sh ${PROJECT_SOURCE_DIR}/examples/cluster/slurm.sh)
set_tests_properties(examples.full_disk examples.mpi examples.shellcheck PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
