# quillon: the shared library. quillon_internal: the same objects as a static
# library, for the tests of the seam, the fuzzers and whatever else needs to
# reach behind the exported interface.
file(GLOB quillon_sources CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/src/data/*.cpp ${PROJECT_SOURCE_DIR}/src/logging/*.cpp
     ${PROJECT_SOURCE_DIR}/src/services/*.cpp ${PROJECT_SOURCE_DIR}/src/metadata/*.cpp
     ${PROJECT_SOURCE_DIR}/src/providers/*.cpp ${PROJECT_SOURCE_DIR}/src/files/*.cpp
     ${PROJECT_SOURCE_DIR}/src/os/*.cpp ${PROJECT_SOURCE_DIR}/Utils/*.cpp
     ${PROJECT_SOURCE_DIR}/src/platform/*.cpp)
if(WIN32)
  file(GLOB quillon_platform_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/platform/win32/*.cpp)
else()
  file(GLOB quillon_platform_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/platform/posix/*.cpp
       ${PROJECT_SOURCE_DIR}/src/platform/simulated/*.cpp)
  quillon_embed_file(zone_document quillon_windows_zones ${PROJECT_SOURCE_DIR}/resources/windowsZones.xml)
  list(APPEND quillon_platform_sources ${zone_document})
endif()

add_library(quillon_objects OBJECT ${quillon_sources} ${quillon_platform_sources})
target_include_directories(quillon_objects PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src
                           ${PROJECT_SOURCE_DIR})
target_compile_definitions(quillon_objects PRIVATE QUILLON_BUILD)
target_link_libraries(quillon_objects PUBLIC quillon_options log4cplus::log4cplus Boost::headers
                      Boost::filesystem Threads::Threads)
if(NOT WIN32)  # certificates
  find_package(OpenSSL REQUIRED COMPONENTS Crypto)
  target_link_libraries(quillon_objects PUBLIC OpenSSL::Crypto)
endif()
if(WIN32)
  target_link_libraries(quillon_objects PUBLIC ws2_32 crypt32 wbemuuid ole32 oleaut32 version netapi32
                        advapi32 secur32 shell32 shlwapi psapi rpcrt4 userenv)
endif()

add_library(quillon SHARED)
add_library(quillon::quillon ALIAS quillon)
target_link_libraries(quillon PRIVATE quillon_objects)
target_compile_features(quillon PUBLIC cxx_std_20)
target_include_directories(quillon PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
quillon_add_version_resource(quillon DESCRIPTION "Quillon agent common library")
set_target_properties(quillon PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
if(WIN32)
  target_sources(quillon PRIVATE ${PROJECT_SOURCE_DIR}/resources/quillon.rc)
  target_link_options(quillon PRIVATE -Wl,--exclude-all-symbols)  # only what is marked QUILLON_API
  include(QuillonWindowsRuntime)
endif()

add_library(quillon_internal STATIC EXCLUDE_FROM_ALL)
target_link_libraries(quillon_internal PUBLIC quillon_objects)
target_compile_definitions(quillon_internal INTERFACE QUILLON_STATIC)
