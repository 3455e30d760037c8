# Checks of the documentation: its links, messages, code and pictures, and the site.

if(PISTONFIELD_USE_CUDA OR PISTONFIELD_SANITIZE)
  return()
endif()

set(docs_folder ${CMAKE_CURRENT_LIST_DIR})
add_test(NAME docs.site COMMAND ${docs_folder}/site.sh)
set_tests_properties(docs.site PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)

find_package(Python3 COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  foreach(name links messages figures_in_one_page)
    add_test(NAME docs.${name} COMMAND ${Python3_EXECUTABLE} ${docs_folder}/${name}.py ${PROJECT_SOURCE_DIR})
  endforeach()
else()
  message(STATUS "Tests: docs.links, docs.messages and docs.figures_in_one_page are left out for lack of Python 3")
endif()

file(GLOB docs_pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/docs/*.md)
add_test(NAME docs.cpp COMMAND ${docs_folder}/cpp.sh ${CMAKE_CXX_COMPILER}
                               $<TARGET_PROPERTY:pistonfield,INTERFACE_INCLUDE_DIRECTORIES> ${docs_pages})

if(TARGET pistonfield_octave)
  add_test(NAME docs.code COMMAND ${docs_folder}/code.sh ${OCTAVE} ${CMAKE_BINARY_DIR}/octave
                                  ${CMAKE_CURRENT_BINARY_DIR}/docs ${docs_pages})
  set_tests_properties(docs.code PROPERTIES TIMEOUT 600)
  # The pictures are drawn with the emulation device, since the last digits differ on a GPU.
  add_test(NAME docs.pictures COMMAND ${docs_folder}/pictures.sh ${OCTAVE} ${CMAKE_BINARY_DIR})
  set_tests_properties(docs.pictures PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 600)
endif()
