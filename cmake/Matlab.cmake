# The module for MATLAB, with the separate complex interface that the gateway is written for:
# <build>/matlab holds the module and its help.

option(PISTONFIELD_MATLAB "Build the module for MATLAB" OFF)
if(NOT PISTONFIELD_MATLAB)
  return()
endif()

find_package(Matlab REQUIRED COMPONENTS MX_LIBRARY)
get_filename_component(matlab_libraries ${Matlab_MX_LIBRARY} DIRECTORY)
find_library(MATLAB_UT NAMES ut libut HINTS ${matlab_libraries} REQUIRED)
matlab_add_mex(NAME pistonfield_matlab OUTPUT_NAME pistonfield
               SRC ${gateway_sources} ${PROJECT_SOURCE_DIR}/src/matlab/hosts/Matlab.cpp
               LINK_TO pistonfield pistonfield_version ${MATLAB_UT} R2017b)
add_dependencies(pistonfield_matlab pistonfield_version_header)
set_target_properties(pistonfield_matlab PROPERTIES
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/matlab
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/matlab)
configure_file(${PROJECT_SOURCE_DIR}/src/matlab/pistonfield.m ${CMAKE_BINARY_DIR}/matlab/pistonfield.m
               COPYONLY)
