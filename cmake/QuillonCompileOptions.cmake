# quillon_options: how every target of the project is compiled. GCC and Clang take the same options; Microsoft's
# compiler takes its own.
add_library(quillon_options INTERFACE)
target_compile_features(quillon_options INTERFACE cxx_std_20)
set(CMAKE_CXX_STANDARD 20 CACHE STRING "C++ standard to compile with, 20 or 23")
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT multi_config)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

if(MSVC)
  target_compile_options(quillon_options INTERFACE /W4 /permissive- /utf-8 /EHsc /Zc:__cplusplus /Zc:preprocessor /bigobj
                         $<$<BOOL:${QUILLON_WERROR}>:/WX>)
  # An exported class may have members of the standard library: both sides are built with the same runtime.
  target_compile_options(quillon_options INTERFACE /wd4251 /wd4275)
else()
  target_compile_options(quillon_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                         $<$<BOOL:${QUILLON_WERROR}>:-Werror>)
endif()

if(WIN32)
  target_compile_definitions(quillon_options INTERFACE _WIN32_WINNT=0x0A00 WINVER=0x0A00 NOMINMAX
                             WIN32_LEAN_AND_MEAN)
  set(CMAKE_SHARED_LIBRARY_PREFIX "")  # quillon.dll
else()
  # The library's own dependencies on glibc only: no lazy surprise at the first call.
  target_link_options(quillon_options INTERFACE -Wl,--as-needed)
endif()

# For the sources that call OpenSSL: no operation that version 3 has deprecated.
set(QUILLON_OPENSSL_3 OPENSSL_API_COMPAT=30000 OPENSSL_NO_DEPRECATED)

if(QUILLON_SANITIZE)
  target_compile_options(quillon_options INTERFACE -fsanitize=${QUILLON_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(quillon_options INTERFACE -fsanitize=${QUILLON_SANITIZE})
  # GCC's flow analysis misfires on instrumented code (seen in <regex>).
  target_compile_options(quillon_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  if(QUILLON_SANITIZE MATCHES "undefined")
    target_compile_options(quillon_options INTERFACE -fno-sanitize-recover=undefined)
  endif()
endif()
