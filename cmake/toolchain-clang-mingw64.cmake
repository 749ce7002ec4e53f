# Clang's target for 64-bit Windows with the headers and libraries of mingw-w64: whether the sources hold for a
# second compiler that imports and exports as Windows does. What is shipped comes from toolchain-mingw64.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw64.cmake)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)
foreach(_kind EXE SHARED MODULE)
  string(APPEND CMAKE_${_kind}_LINKER_FLAGS_INIT " -fuse-ld=lld-19")
endforeach()
