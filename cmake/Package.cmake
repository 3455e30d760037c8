# The rules of `cmake --install`: the C++ library and its headers for find_package(pistonfield) and
# pkg-config, the program gauss_legendre, the licence, and the Octave modules in lib/pistonfield/octave.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pistonfield)

set(libraries pistonfield pistonfield_parallel)
if(NOT PISTONFIELD_USE_CUDA)
  list(APPEND libraries pistonfield_emulation)
endif()
install(TARGETS ${libraries} EXPORT pistonfieldTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/pistonfield)
get_property(public_headers GLOBAL PROPERTY PISTONFIELD_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
  get_filename_component(room ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/src/${header} DESTINATION ${header_dir}/${room})
endforeach()
get_property(field_headers GLOBAL PROPERTY PISTONFIELD_FIELD_HEADERS)
list(TRANSFORM field_headers PREPEND ${PROJECT_SOURCE_DIR}/src/field/)
install(FILES ${field_headers} ${PROJECT_BINARY_DIR}/include/pistonfield/version.h DESTINATION ${header_dir})
install(EXPORT pistonfieldTargets NAMESPACE pistonfield:: DESTINATION ${package_dir})
install(FILES ${PROJECT_SOURCE_DIR}/COPYING DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(TARGET gauss_legendre)
  if(BUILD_SHARED_LIBS)
    file(RELATIVE_PATH to_library ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(gauss_legendre PROPERTIES
      INSTALL_RPATH $<IF:$<BOOL:${APPLE}>,@loader_path,$ORIGIN>/${to_library})
  endif()
  install(TARGETS gauss_legendre)
endif()

# The dependencies of the library. Programs that link it need them only if it is static.
set(private_libraries -pthread)
if(PISTONFIELD_USE_CUDA)
  string(APPEND private_libraries " -L${CUDAToolkit_LIBRARY_DIR} -lcudart_static -ldl -lrt")
endif()
set(public_libraries "")
if(NOT BUILD_SHARED_LIBS)
  set(public_libraries ${private_libraries})
endif()
file(RELATIVE_PATH to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/pistonfield.pc.in pistonfield.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pistonfield.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

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
