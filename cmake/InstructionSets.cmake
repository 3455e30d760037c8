# Sources that are compiled once for each instruction set of the processor's architecture. The set is
# chosen at run time.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  set(instruction_sets Sse2 Avx2 Avx512)
  set(Avx2_options -mavx2 -mfma)
  set(Avx512_options -mavx512f -mavx512dq)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(instruction_sets Neon)
else()
  message(FATAL_ERROR "pistonfield supports x86-64 and 64-bit ARM processors, not ${CMAKE_SYSTEM_PROCESSOR}")
endif()

# In every build type, so that inline functions are inlined.
set(lane_options -O3)
if(PISTONFIELD_SANITIZE)
  set(lane_options -O1) # compiles in a fifth of the time
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ warns about values that its own AVX-512 header leaves undefined on purpose.
  list(APPEND lane_options -Wno-uninitialized -Wno-maybe-uninitialized)
  if(PISTONFIELD_SANITIZE)
    list(APPEND lane_options -fno-var-tracking-assignments)
  endif()
endif()

function(pistonfield_add_for_each_set target folder)
  foreach(set IN LISTS instruction_sets)
    target_sources(${target} PRIVATE ${folder}/${set}.cpp)
    set_source_files_properties(${folder}/${set}.cpp PROPERTIES
                                COMPILE_OPTIONS "${lane_options};${${set}_options}")
  endforeach()
endfunction()
