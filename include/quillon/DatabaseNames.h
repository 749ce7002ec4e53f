#pragma once

#include "quillon/Export.h"

namespace quillon {

/// The agent's two local databases.
class QUILLON_API DatabaseNames {
public:
    DatabaseNames() = delete;

    static const char* const InventoryDatabaseName;  ///< "Inventory"
    static const char* const PolicyDatabaseName;     ///< "Policy"
};

}  // namespace quillon
