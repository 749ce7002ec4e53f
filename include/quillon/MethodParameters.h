#pragma once

#include <map>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/VariantList.h"

namespace quillon {

/// Holds the parameters of one call, which the host makes and the library and the method read. The
/// host keeps it, unchanged, until the method has returned.
struct MethodParameters {
    /// Holds the scalar parameters in the caller's order; a value without a name is anonymous.
    VariantList scalars;
    /// Holds the table parameters by their names; the empty name is an anonymous table. The tables
    /// belong to the host.
    std::map<std::string, const DataTable*> tables;
};

}  // namespace quillon
