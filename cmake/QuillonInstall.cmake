# Headers, library, agent, CMake package, pkg-config file and what debuggers show values with.
include(CMakePackageConfigHelpers)

# Components, which are the packages: library, agent, devel and, within its package, testkit.
install(TARGETS quillon EXPORT quillonTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT devel
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
if(TARGET quillon-agent)
  if(NOT QUILLON_SYSTEM_PACKAGE)  # whose libraries the system finds by itself
    file(RELATIVE_PATH libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
    set_target_properties(quillon-agent PROPERTIES INSTALL_RPATH $ORIGIN/${libraries})
  endif()
  install(TARGETS quillon-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
endif()
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME devel)
install(DIRECTORY include/quillon DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h"
        PATTERN testkit EXCLUDE)
if(TARGET quillon_testkit)
  install(DIRECTORY include/quillon/testkit DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillon COMPONENT testkit)
endif()

install(FILES resources/debug/quillon_gdb.py resources/debug/quillon.natvis
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quillon)
install(EXPORT quillonTargets NAMESPACE quillon:: DESTINATION ${package_dir})
if(TARGET quillon_testkit)
  install(TARGETS quillon_testkit EXPORT quillonTestkitTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT testkit)
  install(EXPORT quillonTestkitTargets NAMESPACE quillon:: DESTINATION ${package_dir} COMPONENT testkit)
endif()
configure_package_config_file(cmake/quillonConfig.cmake.in ${PROJECT_BINARY_DIR}/quillonConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quillonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quillonConfig.cmake ${PROJECT_BINARY_DIR}/quillonConfigVersion.cmake
        cmake/QuillonAddModule.cmake cmake/quillon_module.map
        DESTINATION ${package_dir})

# Relative, so that the package may be installed under another prefix, or moved.
file(RELATIVE_PATH QUILLON_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/quillon.pc.in ${PROJECT_BINARY_DIR}/quillon.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quillon.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
