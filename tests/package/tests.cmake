# Tests installed files, and the packages of scripts/package, as users use them.

if(PISTONFIELD_SANITIZE OR PISTONFIELD_USE_CUDA)
  return()
endif()

set(folder ${CMAKE_CURRENT_LIST_DIR})
add_test(NAME package.parent COMMAND ${folder}/parent.sh ${CMAKE_BINARY_DIR})
foreach(kind static shared)
  add_test(NAME package.${kind}_library COMMAND ${folder}/library.sh ${CMAKE_BINARY_DIR} ${kind}
                                                   "$<$<TARGET_EXISTS:pistonfield_octave>:${OCTAVE}>")
endforeach()
set_tests_properties(package.parent package.static_library package.shared_library PROPERTIES TIMEOUT 300)
add_test(NAME package.environment COMMAND ${folder}/environment.sh ${CMAKE_BINARY_DIR})
add_test(NAME package.folder_names COMMAND ${folder}/folder_names.sh ${PROJECT_SOURCE_DIR}
                                           ${CMAKE_COMMAND})
add_test(NAME package.revision COMMAND ${folder}/revision.sh ${PROJECT_SOURCE_DIR} ${CMAKE_COMMAND})
add_test(NAME package.neighbour COMMAND ${folder}/neighbour.sh ${CMAKE_BINARY_DIR} "${PISTONFIELD_NVCC}")
set_tests_properties(package.neighbour PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)

if(NOT TARGET pistonfield_octave)
  return()
endif()
add_test(NAME package.octave COMMAND ${folder}/octave.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave)
add_test(NAME package.sudo COMMAND ${folder}/sudo.sh ${OCTAVE}
                                   ${PROJECT_SOURCE_DIR}/packaging/octave/pre_install.m
                                   ${PROJECT_SOURCE_DIR}/scripts/setup)
add_test(NAME package.matlab COMMAND ${folder}/matlab.sh ${OCTAVE} ${CMAKE_BINARY_DIR})
add_test(NAME package.fresh_machine COMMAND ${folder}/fresh_machine.sh)
set_tests_properties(package.octave package.matlab package.sudo PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
set_tests_properties(package.fresh_machine PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 3600 LABELS long)
