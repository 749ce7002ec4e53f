# quillon: the shared library. quillon_internal: the same objects as a static
# library, for the tests of the internals, the fuzzers and whatever else needs to
# reach behind the exported interface. quillon_simulation: Windows facilities in
# memory, which Linux links into the library and the tests of both systems use.
file(GLOB quillon_sources CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/src/base/*.cpp ${PROJECT_SOURCE_DIR}/src/data/*.cpp ${PROJECT_SOURCE_DIR}/src/logging/*.cpp
     ${PROJECT_SOURCE_DIR}/src/services/*.cpp ${PROJECT_SOURCE_DIR}/src/metadata/*.cpp
     ${PROJECT_SOURCE_DIR}/src/providers/*.cpp ${PROJECT_SOURCE_DIR}/src/files/*.cpp
     ${PROJECT_SOURCE_DIR}/src/os/*.cpp ${PROJECT_SOURCE_DIR}/Utils/*.cpp ${PROJECT_SOURCE_DIR}/Utils/*/*.cpp
     ${PROJECT_SOURCE_DIR}/src/platform/*.cpp)
set(platform_dir ${PROJECT_SOURCE_DIR}/src/platform)
if(WIN32)
  file(GLOB quillon_platform_sources CONFIGURE_DEPENDS ${platform_dir}/win32/*.cpp)
  list(APPEND quillon_platform_sources ${platform_dir}/ole/VariantNumber.cpp)  # the rest of OLE is the system's
else()
  file(GLOB quillon_platform_sources CONFIGURE_DEPENDS ${platform_dir}/posix/*.cpp ${platform_dir}/native/*.cpp
       ${platform_dir}/ole/*.cpp)
  quillon_embed_file(zone_document quillon_windows_zones ${PROJECT_SOURCE_DIR}/resources/windowsZones.xml)
  list(APPEND quillon_platform_sources ${zone_document})
endif()

file(GLOB quillon_simulation_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/simulation/*.cpp
     ${PROJECT_SOURCE_DIR}/src/simulation/*/*.cpp)
list(FILTER quillon_simulation_sources EXCLUDE REGEX /machine/)
if(NOT WIN32)  # the machine's facts are Linux's
  file(GLOB quillon_machine_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/simulation/machine/*.cpp)
endif()

add_library(quillon_objects OBJECT ${quillon_sources} ${quillon_platform_sources})
target_include_directories(quillon_objects PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src
                           ${PROJECT_SOURCE_DIR})
target_compile_definitions(quillon_objects PRIVATE QUILLON_BUILD)
find_package(pugixml REQUIRED)  # the table of time zones
target_link_libraries(quillon_objects PUBLIC quillon_options log4cplus::log4cplus Threads::Threads PRIVATE pugixml::pugixml)
# C++23's strings need not fill their room with zeros before a conversion writes to it.
if(CMAKE_CXX_STANDARD EQUAL 20 AND CMAKE_CXX23_STANDARD_COMPILE_OPTION)
  set_property(SOURCE ${PROJECT_SOURCE_DIR}/src/base/Utf.cpp APPEND PROPERTY
               COMPILE_OPTIONS ${CMAKE_CXX23_STANDARD_COMPILE_OPTION})
endif()
if(NOT WIN32)  # certificates
  find_package(OpenSSL REQUIRED COMPONENTS Crypto)
  target_link_libraries(quillon_objects PUBLIC OpenSSL::Crypto)
  file(GLOB openssl_sources ${platform_dir}/posix/Certificate*.cpp)
  set_property(SOURCE ${openssl_sources} APPEND PROPERTY COMPILE_DEFINITIONS ${QUILLON_OPENSSL_3})
endif()
if(WIN32)
  target_link_libraries(quillon_objects PUBLIC ws2_32 iphlpapi crypt32 wbemuuid ole32 oleaut32 version netapi32
                        advapi32 secur32 shell32 shlwapi psapi rpcrt4 userenv)
endif()

# The library calls the simulation on Linux, the simulation the seam: whoever links
# both statically asks for quillon_internal_with_simulation.
add_library(quillon_simulation_objects OBJECT EXCLUDE_FROM_ALL ${quillon_simulation_sources})
add_library(quillon_simulation STATIC EXCLUDE_FROM_ALL ${quillon_machine_sources}
            $<TARGET_OBJECTS:quillon_simulation_objects>)
foreach(target quillon_simulation_objects quillon_simulation)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(${target} PRIVATE QUILLON_STATIC)
  target_link_libraries(${target} PUBLIC quillon_options Threads::Threads)
endforeach()

add_library(quillon SHARED)
add_library(quillon::quillon ALIAS quillon)
target_link_libraries(quillon PRIVATE quillon_objects)
if(NOT WIN32)
  target_link_libraries(quillon PRIVATE quillon_simulation)
endif()
target_compile_features(quillon PUBLIC cxx_std_20)
target_include_directories(quillon PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
quillon_add_version_resource(quillon DESCRIPTION "Quillon agent common library")
set_target_properties(quillon PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
if(WIN32)
  target_sources(quillon PRIVATE ${PROJECT_SOURCE_DIR}/resources/quillon.rc)
  if(MINGW)
    target_link_options(quillon PRIVATE -Wl,--exclude-all-symbols)  # only what is marked QUILLON_API
    include(QuillonWindowsRuntime)
  endif()
else()
  set(export_list ${PROJECT_SOURCE_DIR}/cmake/quillon.map)
  # A look-up or a command that was left behind goes on in a thread when a host unloads the library.
  target_link_options(quillon PRIVATE -Wl,--version-script=${export_list} -Wl,-z,nodelete)
  set_target_properties(quillon PROPERTIES LINK_DEPENDS ${export_list})
endif()

add_library(quillon_internal STATIC EXCLUDE_FROM_ALL)
target_link_libraries(quillon_internal PUBLIC quillon_objects)
target_compile_definitions(quillon_internal INTERFACE QUILLON_STATIC)

add_library(quillon_internal_with_simulation INTERFACE)
if(CMAKE_LINK_GROUP_USING_RESCAN_SUPPORTED)
  target_link_libraries(quillon_internal_with_simulation INTERFACE
                        "$<LINK_GROUP:RESCAN,quillon_internal,quillon_simulation>")
else()  # the linker searches every library as often as it must
  target_link_libraries(quillon_internal_with_simulation INTERFACE quillon_internal quillon_simulation)
endif()
