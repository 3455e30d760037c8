# Provides the header version.h, which is regenerated after each commit.

set(version_dir ${PROJECT_BINARY_DIR}/generated)
set(write_version
    ${CMAKE_COMMAND} -D SOURCE=${CMAKE_CURRENT_SOURCE_DIR} -D OUTPUT=${version_dir}/version.h
    -D VERSION=${PROJECT_VERSION} -P ${CMAKE_CURRENT_LIST_DIR}/WriteVersion.cmake)
add_custom_target(pistonfield_version_header COMMAND ${write_version}
                  BYPRODUCTS ${version_dir}/version.h COMMENT "Reading the version" VERBATIM)
add_library(pistonfield_version INTERFACE)
target_include_directories(pistonfield_version INTERFACE ${version_dir})
add_dependencies(pistonfield_version pistonfield_version_header)
