# The tests whose work is spread over the cores, in a program of their own: small enough to be built
# for the thread sanitizer whenever all is tested.

if(PISTONFIELD_USE_CUDA)
  return()
endif()

add_executable(thread_tests EXCLUDE_FROM_ALL
  emulation/LaunchTest.cpp
  emulation/MemoryTest.cpp
  FastNearfield/LaunchersAgreeTest.cpp
  FastNearfield/SpreadWorkTest.cpp
  parallel/SpreadTest.cpp
  threads/LibraryThreadsTest.cpp)
target_link_libraries(thread_tests PRIVATE pistonfield_with_device pistonfield_parallel test_support
                                           GTest::gtest_main)
precompile(thread_tests)
