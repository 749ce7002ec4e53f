#pragma once

#include <map>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/VariantList.h"

namespace quillon {

/// One call's parameters, made by the host and read by the library.
struct MethodParameters {
    /// In the caller's order; a value without a name is anonymous.
    VariantList scalars;
    /// Not owned; the empty name is an anonymous table.
    std::map<std::string, const DataTable*> tables;
};

}  // namespace quillon
