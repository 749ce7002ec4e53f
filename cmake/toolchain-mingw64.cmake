# Cross-compiles for 64-bit Windows with mingw-w64 (posix threads) and runs the
# results through Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(_target x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${_target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${_target}-g++-posix)
set(CMAKE_RC_COMPILER ${_target}-windres)
set(CMAKE_AR ${_target}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${_target}-gcc-ranlib-posix CACHE FILEPATH "")

# Where scripts/build-deps put the libraries (-DWIN_DEPS=... or the environment).
if(NOT WIN_DEPS AND DEFINED ENV{WIN_DEPS})
  set(WIN_DEPS $ENV{WIN_DEPS})
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WIN_DEPS)
set(CMAKE_FIND_ROOT_PATH /usr/${_target} ${WIN_DEPS})
list(APPEND CMAKE_PREFIX_PATH ${WIN_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(WINE_EXECUTABLE NAMES wine wine64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE_EXECUTABLE})
