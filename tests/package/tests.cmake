# What scripts/package makes, installed and used.

if(PISTONFIELD_SANITIZE OR PISTONFIELD_USE_CUDA)
  return()
endif()

set(folder ${CMAKE_CURRENT_LIST_DIR})
add_test(NAME package.revision COMMAND ${folder}/revision.sh ${PROJECT_SOURCE_DIR} ${CMAKE_COMMAND})
