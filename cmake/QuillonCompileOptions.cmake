# quillon_options: how every target of the project is compiled.
add_library(quillon_options INTERFACE)
target_compile_features(quillon_options INTERFACE cxx_std_20)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

target_compile_options(quillon_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(QUILLON_WERROR)
  target_compile_options(quillon_options INTERFACE -Werror)
endif()

if(WIN32)
  target_compile_definitions(quillon_options INTERFACE _WIN32_WINNT=0x0A00 WINVER=0x0A00 NOMINMAX
                             WIN32_LEAN_AND_MEAN)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")  # quillon.dll
else()
  # The library's own dependencies on glibc only: no lazy surprise at the first call.
  target_link_options(quillon_options INTERFACE -Wl,--as-needed)
endif()

if(QUILLON_SANITIZE)
  target_compile_options(quillon_options INTERFACE -fsanitize=${QUILLON_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(quillon_options INTERFACE -fsanitize=${QUILLON_SANITIZE})
  # GCC's flow analysis misfires on instrumented code (seen in <regex>).
  target_compile_options(quillon_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  if(QUILLON_SANITIZE MATCHES "undefined")
    target_compile_options(quillon_options INTERFACE -fno-sanitize-recover=undefined)
  endif()
endif()
