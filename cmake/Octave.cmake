# Builds the modules for GNU Octave and copies the functions: <build>/octave.

find_program(MKOCTFILE mkoctfile)
find_program(OCTAVE NAMES octave-cli octave)
if(NOT MKOCTFILE)
  message(STATUS "Octave: mkoctfile was not found; the Octave module is not built")
  return()
endif()
if(PISTONFIELD_SANITIZE)
  return() # Octave is not sanitized and cannot load sanitized modules
endif()

execute_process(COMMAND ${MKOCTFILE} -p OCTINCLUDEDIR OUTPUT_VARIABLE octave_include
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(mex_h ${octave_include} ${octave_include}/octave)
set(interruption ${PROJECT_SOURCE_DIR}/src/matlab/hosts/Octave.cpp)
pistonfield_add_module(pistonfield_octave ${interruption} ${mex_h})
pistonfield_add_module(pistonfield_octave_quiet ${interruption} ${mex_h})
target_compile_definitions(pistonfield_octave_quiet PRIVATE PISTONFIELD_QUIET)
pistonfield_add_loaded(pistonfield_octave_about ${PROJECT_SOURCE_DIR}/src/matlab/about.cpp ${mex_h})
pistonfield_add_loaded(pistonfield_octave_pressure "${pressure_sources};${interruption}" ${mex_h})

set(octave_modules pistonfield_octave pistonfield_octave_quiet pistonfield_octave_about
                   pistonfield_octave_pressure)
foreach(module IN LISTS octave_modules)
  string(REPLACE _octave "" name ${module})
  set_target_properties(${module} PROPERTIES
    OUTPUT_NAME ${name} SUFFIX .mex LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/octave)
endforeach()
include(HideSymbols)
pistonfield_hide_symbols(pistonfield_octave ${PROJECT_SOURCE_DIR}/src/matlab/exports.map)
foreach(module pistonfield_octave_quiet pistonfield_octave_about pistonfield_octave_pressure)
  pistonfield_hide_symbols(${module} ${PROJECT_SOURCE_DIR}/src/matlab/exports_internal.map)
endforeach()
pistonfield_copy_functions(${CMAKE_BINARY_DIR}/octave)
add_custom_target(octave DEPENDS ${octave_modules})
