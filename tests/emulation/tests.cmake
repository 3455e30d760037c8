# The same tests with an emulation device that does not start.

if(PISTONFIELD_USE_CUDA OR PISTONFIELD_SANITIZE)
  return()
endif()

set(state ${CMAKE_CURRENT_BINARY_DIR}/deviceless/State.cpp)
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/deviceless)
add_custom_command(OUTPUT ${state}
  COMMAND sed "s/return {device}/return {}/" ${PROJECT_SOURCE_DIR}/src/emulation/State.cpp > ${state}
  DEPENDS ${PROJECT_SOURCE_DIR}/src/emulation/State.cpp VERBATIM)

add_executable(deviceless_tests ${state} $<TARGET_OBJECTS:unit_tests> ${objects_of_sets})
target_link_libraries(deviceless_tests PRIVATE $<TARGET_PROPERTY:unit_tests,LINK_LIBRARIES>)
add_library(deviceless_module MODULE ${state} $<TARGET_OBJECTS:gateway_module>)
target_link_libraries(deviceless_module PRIVATE $<TARGET_PROPERTY:gateway_module,LINK_LIBRARIES>)

add_test(NAME emulation.deviceless
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/deviceless.sh $<TARGET_FILE:deviceless_tests>
                 $<TARGET_FILE:gateway_tests> $<TARGET_FILE:deviceless_module>)
