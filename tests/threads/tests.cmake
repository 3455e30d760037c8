# The tests of work that is spread over the cores. They are a separate program, small enough to be built with
# the thread sanitizer in every full test run.

if(PISTONFIELD_USE_CUDA)
  return()
endif()

add_executable(thread_tests EXCLUDE_FROM_ALL
  emulation/LaunchTest.cpp
  emulation/MemoryTest.cpp
  FastNearfield/LaunchersAgreeTest.cpp
  parallel/SpreadTest.cpp
  threads/FieldThreadsTest.cpp
  threads/LibraryThreadsTest.cpp)
target_link_libraries(thread_tests PRIVATE pistonfield_with_device pistonfield_parallel test_support
                                           GTest::gtest_main)
precompile(thread_tests)
