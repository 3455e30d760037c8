# Code that exists once for each instruction set of this kind of processor. Which of them runs is
# decided at run time.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  set(instruction_sets Sse2 Avx2 Avx512)
  set(Avx2_options -mavx2 -mfma)
  set(Avx512_options -mavx512f -mavx512dq)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(instruction_sets Neon)
else()
  message(FATAL_ERROR "There are no lanes for processors of the kind ${CMAKE_SYSTEM_PROCESSOR}")
endif()

# Whatever the build type, lest inline functions become functions.
set(lane_options -O3)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # It takes what its own AVX-512 header leaves undefined on purpose for a mistake.
  list(APPEND lane_options -Wno-uninitialized -Wno-maybe-uninitialized)
endif()

function(pistonfield_add_for_each_set target folder)
  foreach(set IN LISTS instruction_sets)
    target_sources(${target} PRIVATE ${folder}/${set}.cpp)
    set_source_files_properties(${folder}/${set}.cpp PROPERTIES
                                COMPILE_OPTIONS "${lane_options};${${set}_options}")
  endforeach()
endfunction()
