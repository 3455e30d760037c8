# What `cmake --install` puts where: the C++ library and its headers for find_package(pistonfield), the
# program gauss_legendre, and what Octave loads in lib/pistonfield/octave.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pistonfield)
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/pistonfield)

set(libraries pistonfield)
if(NOT PISTONFIELD_USE_CUDA)
  list(APPEND libraries pistonfield_emulation pistonfield_parallel)
endif()
install(TARGETS ${libraries} EXPORT pistonfieldTargets FILE_SET HEADERS DESTINATION ${header_dir})
install(EXPORT pistonfieldTargets NAMESPACE pistonfield:: DESTINATION ${package_dir})
install(TARGETS gauss_legendre)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/pistonfieldConfig.cmake.in
                              pistonfieldConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(pistonfieldConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pistonfieldConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/pistonfieldConfigVersion.cmake
        DESTINATION ${package_dir})

if(TARGET pistonfield_octave)
  set(octave_dir ${CMAKE_INSTALL_LIBDIR}/pistonfield/octave)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/octave/ DESTINATION ${octave_dir})
endif()
