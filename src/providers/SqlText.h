#pragma once

#include <string>
#include <string_view>

#include "quillon/IApplicationDataStore.h"

namespace quillon {

/// Returns whether a name can stand between brackets, which have no escape for the closing one.
inline bool CanStandInBrackets(const std::string& name) {
    return !name.empty() && name.find_first_of(std::string_view("]\0", 2)) == std::string::npos;
}

/// Returns the type of a column as SQL text.
inline const char* TypeText(IApplicationDataStore::ColumnDataType type) {
    if (type == IApplicationDataStore::Integer) return "INTEGER";
    return type == IApplicationDataStore::Real ? "REAL" : "TEXT";
}

}  // namespace quillon
