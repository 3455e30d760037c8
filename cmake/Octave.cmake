# The module for GNU Octave: <build>/octave holds pistonfield.mex and its help.

find_program(MKOCTFILE mkoctfile)
find_program(OCTAVE NAMES octave-cli octave)
if(NOT MKOCTFILE)
  message(STATUS "Octave: mkoctfile was not found; the Octave module is not built")
  return()
endif()
if(PISTONFIELD_SANITIZE)
  return() # Octave, which is not sanitized, could not load it
endif()

execute_process(COMMAND ${MKOCTFILE} -p OCTINCLUDEDIR OUTPUT_VARIABLE octave_include
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
pistonfield_add_module(pistonfield_octave ${PROJECT_SOURCE_DIR}/src/matlab/hosts/Octave.cpp
                       ${octave_include} ${octave_include}/octave)
set_target_properties(pistonfield_octave PROPERTIES
  OUTPUT_NAME pistonfield SUFFIX .mex LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/octave)
pistonfield_hide_symbols(pistonfield_octave)
configure_file(${PROJECT_SOURCE_DIR}/src/matlab/pistonfield.m ${CMAKE_BINARY_DIR}/octave/pistonfield.m
               COPYONLY)
