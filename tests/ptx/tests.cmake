# In builds for CUDA, runs the kernels that nvcc compiled, without a GPU. Other builds, which need no toolkit,
# test the machine that runs them. Sanitizers do not apply.

if(PISTONFIELD_SANITIZE)
  return()
endif()

find_program(PISTONFIELD_TEST_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH) # the interpreter that has numpy

set(names machine)
if(PISTONFIELD_USE_CUDA)
  set(names kernels pistons)
endif()
foreach(name IN LISTS names)
  if(PISTONFIELD_TEST_PYTHON)
    set(command ${PISTONFIELD_TEST_PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/${name}_test.py)
  else()
    set(command ${CMAKE_COMMAND} -E echo "SKIPPED: no /usr/bin/python3")
  endif()
  if(PISTONFIELD_USE_CUDA)
    list(APPEND command ${PISTONFIELD_NVCC})
  endif()
  add_test(NAME ptx.${name} COMMAND ${command})
  set_tests_properties(ptx.${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 600
                                              SKIP_REGULAR_EXPRESSION "^SKIPPED: ")
endforeach()
