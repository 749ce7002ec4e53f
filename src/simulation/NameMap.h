#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/Characters.h"

namespace quillon::simulation {

struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::wstring_view name) const {
        std::size_t hash = 1469598103934665603U;  // FNV-1a
        for (const wchar_t c : name)
            hash = (hash ^ static_cast<std::size_t>(base::Lower(c))) * 1099511628211U;
        return hash;
    }
};

struct NameEqual {
    using is_transparent = void;
    bool operator()(std::wstring_view a, std::wstring_view b) const { return base::EqualIgnoringCase(a, b); }
};

/// A map whose keys are case-insensitive in ASCII; a look-up makes no string.
template <class Value>
using NameMap = std::unordered_map<std::wstring, Value, NameHash, NameEqual>;

}  // namespace quillon::simulation
