#pragma once

#include <cstddef>
#include <cstdint>

/// A fuzz target by its name; the build makes the list of those that are linked, which ends with a null name.
struct FuzzTarget {
    const char* name;
    int (*run)(const std::uint8_t* data, std::size_t size);
};

extern const FuzzTarget kFuzzTargets[];
