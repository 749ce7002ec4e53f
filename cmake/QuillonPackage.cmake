# CPack: Debian packages (libquillon1, libquillon-dev, quillon-agent, debug information apart) or, for Windows, one
# archive. scripts/package builds both; docs/deploying.md says what is in them.
set(CPACK_PACKAGE_NAME quillon)
set(CPACK_PACKAGE_VENDOR "Quillon maintainers")
set(QUILLON_MAINTAINER "Quillon maintainers <maintainers@example.com>" CACHE STRING
    "Whom the packages name as maintainer, as NAME <ADDRESS>; the owner of the project sets it")
set(CPACK_PACKAGE_CONTACT "${QUILLON_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)

set(example examples/uptime_module)
set(notices NOTICE resources/UNICODE-LICENSE CHANGELOG.md SECURITY.md packaging/sbom.cdx.json)
if(TARGET quillon_testkit AND CMAKE_STRIP)  # programs are stripped by CPack, archives are not
  install(CODE "execute_process(COMMAND ${CMAKE_STRIP} --strip-debug --enable-deterministic-archives
    \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libquillon_testkit.a COMMAND_ERROR_IS_FATAL ANY)"
          COMPONENT testkit)
endif()

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_PACKAGE_FILE_NAME quillon-${PROJECT_VERSION}-windows-x64)
  set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
  if(MINGW)
    foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
      install(PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
      install(CODE "execute_process(COMMAND ${CMAKE_STRIP} --strip-all
        \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${dll} COMMAND_ERROR_IS_FATAL ANY)"
              COMPONENT library)
    endforeach()
  endif()
  install(FILES ${notices} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT library)
  install(DIRECTORY ${example} DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT devel)
  include(CPack)
  return()
endif()

set(library libquillon${PROJECT_VERSION_MAJOR})
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL library devel testkit agent)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)  # strips too
set(same_version "(= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
file(WRITE ${PROJECT_BINARY_DIR}/generated/shlibs
     "libquillon ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})\n")
file(WRITE ${PROJECT_BINARY_DIR}/generated/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/generated/shlibs
    ${PROJECT_BINARY_DIR}/generated/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "Tables and variants, logging, commands under a time-out, WMI queries, stores,
files and the descriptions of methods, for the engine and the modules of an
endpoint-management agent.")

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME libquillon-dev)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVEL_DEBUGINFO_PACKAGE OFF)
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS "${library} ${same_version}, libsqlite3-dev")
set(CPACK_DEBIAN_DEVEL_PACKAGE_RECOMMENDS "cmake, g++, libgmock-dev")
set(CPACK_DEBIAN_DEVEL_DESCRIPTION "What the author of a module for the agent needs: headers, CMake package,
pkg-config file, the kit with which modules are tested, and an example.")

set(CPACK_DEBIAN_AGENT_PACKAGE_NAME quillon-agent)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_AGENT_DESCRIPTION "Lists and runs methods, its own and those of modules, from the command line
or as a host that serves calls.")

# What each package documents: whose code it contains, and its changes, compressed as the system asks.
find_program(GZIP gzip REQUIRED)
set(DEBIAN_CHANGELOG ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)
foreach(package ${library} libquillon-dev quillon-agent)
  set(component agent)
  if(package STREQUAL "${library}")
    set(component library)
  elseif(package MATCHES -dev)
    set(component devel)
  endif()
  set(generated ${PROJECT_BINARY_DIR}/generated/${package})
  configure_file(packaging/debian/copyright ${generated}/copyright COPYONLY)
  file(READ ${DEBIAN_CHANGELOG} changes)
  string(REPLACE "@VERSION@" "${PROJECT_VERSION}-1" changes "${changes}")
  string(REPLACE "@MAINTAINER@" "${QUILLON_MAINTAINER}" changes "${changes}")
  file(WRITE ${generated}/changelog.Debian "${changes}")
  execute_process(COMMAND ${GZIP} -9nf ${generated}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${generated}/copyright ${generated}/changelog.Debian.gz DESTINATION share/doc/${package} COMPONENT ${component})
endforeach()
list(REMOVE_ITEM notices CHANGELOG.md)
install(FILES ${notices} DESTINATION share/doc/${library} COMPONENT library)
install(FILES CHANGELOG.md DESTINATION share/doc/libquillon-dev COMPONENT devel RENAME changes.md)
install(DIRECTORY ${example} DESTINATION share/doc/libquillon-dev/examples COMPONENT devel)

include(CPack)
cpack_add_component(library GROUP library)
cpack_add_component(devel GROUP devel)
cpack_add_component(testkit GROUP devel)
cpack_add_component(agent GROUP agent)
