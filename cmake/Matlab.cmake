# Builds the modules for MATLAB and copies the functions: <build>/matlab. The gateway uses the separate
# complex interface.

option(PISTONFIELD_MATLAB "Build the modules for MATLAB" OFF)
if(NOT PISTONFIELD_MATLAB)
  return()
endif()

find_package(Matlab REQUIRED COMPONENTS MX_LIBRARY)
get_filename_component(matlab_libraries ${Matlab_MX_LIBRARY} DIRECTORY)
find_library(MATLAB_UT NAMES ut libut HINTS ${matlab_libraries} REQUIRED)
set(interruption ${PROJECT_SOURCE_DIR}/src/matlab/hosts/Matlab.cpp)

function(pistonfield_add_matlab_module name)
  set(target ${name}_matlab)
  matlab_add_mex(NAME ${target} OUTPUT_NAME ${name} SRC ${ARGN} LINK_TO ${MATLAB_UT} R2017b)
  pistonfield_complete(${target})
  set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/matlab
                                             RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/matlab)
endfunction()

pistonfield_add_matlab_module(pistonfield ${gateway_sources} ${interruption})
pistonfield_add_matlab_module(pistonfield_quiet ${gateway_sources} ${interruption})
target_compile_definitions(pistonfield_quiet_matlab PRIVATE PISTONFIELD_QUIET)
pistonfield_add_matlab_module(pistonfield_about ${PROJECT_SOURCE_DIR}/src/matlab/about.cpp)
pistonfield_add_matlab_module(pistonfield_pressure ${pressure_sources} ${interruption})

pistonfield_copy_functions(${CMAKE_BINARY_DIR}/matlab)
add_custom_target(matlab DEPENDS pistonfield_matlab pistonfield_quiet_matlab pistonfield_about_matlab
                                 pistonfield_pressure_matlab)
