# What a host needs for its modules whoever it is: the SQL engine, and how texts become the parameters of a
# call. The agent has it, and the test kit.
include_guard(GLOBAL)
find_package(SQLite3 REQUIRED)

if(WIN32)
  set(services_side win32)
else()
  set(services_side posix)
endif()
file(GLOB agent_service_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/sql/*.cpp)
list(APPEND agent_service_sources ${CMAKE_CURRENT_LIST_DIR}/common/Failure.cpp
     ${CMAKE_CURRENT_LIST_DIR}/common/ParameterType.cpp
     ${CMAKE_CURRENT_LIST_DIR}/common/ShownText.cpp
     ${CMAKE_CURRENT_LIST_DIR}/common/TemporaryName.cpp
     ${CMAKE_CURRENT_LIST_DIR}/modules/Arguments.cpp
     ${CMAKE_CURRENT_LIST_DIR}/system/${services_side}/DatabaseLocks.cpp
     ${CMAKE_CURRENT_LIST_DIR}/system/${services_side}/PrivateFile.cpp
     ${CMAKE_CURRENT_LIST_DIR}/system/${services_side}/SystemErrorText.cpp)

add_library(quillon_agent_services OBJECT ${agent_service_sources})
target_link_libraries(quillon_agent_services PUBLIC quillon::quillon quillon_options SQLite::SQLite3)
target_include_directories(quillon_agent_services PUBLIC ${CMAKE_CURRENT_LIST_DIR}
                           PRIVATE ${CMAKE_CURRENT_LIST_DIR}/system/${services_side})
