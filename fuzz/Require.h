#pragma once

#include <cstdlib>

/// Ends the program, so that the fuzzer keeps the input, when what must hold of it does not.
inline void Require(bool condition) {
    if (!condition) std::abort();
}
