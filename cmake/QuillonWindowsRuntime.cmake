# The compiler's shared runtime beside the binaries: with a static one in every
# module std::uncaught_exceptions() goes wrong across the library's boundary.
separate_arguments(runtime_flags UNIX_COMMAND "${CMAKE_CXX_FLAGS}")
if(CMAKE_CXX_COMPILER_TARGET)
  list(APPEND runtime_flags --target=${CMAKE_CXX_COMPILER_TARGET})
endif()
foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} ${runtime_flags} -print-file-name=${dll}
                  OUTPUT_VARIABLE runtime_path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${runtime_path}")
    find_file(runtime_${dll} ${dll} PATHS /usr/x86_64-w64-mingw32/lib NO_DEFAULT_PATH
              NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(runtime_path ${runtime_${dll}})
  endif()
  configure_file(${runtime_path} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} COPYONLY)
endforeach()
