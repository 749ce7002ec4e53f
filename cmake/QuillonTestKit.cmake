# quillon::testkit: a static library with which the author of a module tests it on both systems, against the
# shared library. It holds the simulation, what that needs of the library's own code, and the facades of
# include/quillon/testkit.
include(${PROJECT_SOURCE_DIR}/examples/agent/Services.cmake)

set(platform_dir ${PROJECT_SOURCE_DIR}/src/platform)
file(GLOB testkit_base_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/base/*.cpp)
if(WIN32)
  list(APPEND testkit_base_sources ${platform_dir}/ole/VariantNumber.cpp ${platform_dir}/win32/ComError.cpp)
else()
  file(GLOB testkit_ole_sources CONFIGURE_DEPENDS ${platform_dir}/ole/*.cpp)
  list(APPEND testkit_base_sources ${testkit_ole_sources})
endif()
# Its own copy, because the shared library exports none of it.
add_library(quillon_testkit_base OBJECT ${testkit_base_sources})
target_include_directories(quillon_testkit_base PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(quillon_testkit_base PRIVATE QUILLON_STATIC)
target_link_libraries(quillon_testkit_base PRIVATE quillon_options)

file(GLOB testkit_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/testkit/*.cpp)
add_library(quillon_testkit STATIC ${testkit_sources} $<TARGET_OBJECTS:quillon_simulation_objects>
            $<TARGET_OBJECTS:quillon_testkit_base> $<TARGET_OBJECTS:quillon_agent_services>)
add_library(quillon::testkit ALIAS quillon_testkit)
set_target_properties(quillon_testkit PROPERTIES EXPORT_NAME testkit)
target_include_directories(quillon_testkit PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/examples/agent)
target_link_libraries(quillon_testkit PUBLIC quillon
                      PRIVATE SQLite::SQLite3 Threads::Threads $<BUILD_INTERFACE:quillon_options>)
if(WIN32)
  target_link_libraries(quillon_testkit PRIVATE wbemuuid ole32 oleaut32)
endif()
