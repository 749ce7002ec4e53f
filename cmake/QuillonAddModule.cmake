# quillon_add_module(NAME SOURCES FILE...): a module for an agent's directory of modules, NAME.so or NAME.dll.
# It exports nothing but its entry (quillon/ModuleEntry.h), and a symbol that is missing fails the link, not the agent.
function(quillon_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "" "SOURCES")
  if(NOT module_SOURCES OR module_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "quillon_add_module(NAME SOURCES FILE...): given '${ARGN}'")
  endif()
  add_library(${name} MODULE ${module_SOURCES})
  target_link_libraries(${name} PRIVATE quillon::quillon)
  set_target_properties(${name} PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(UNIX)
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()
endfunction()
