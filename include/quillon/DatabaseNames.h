#pragma once

#include "quillon/Export.h"

namespace quillon {

/// Names the agent's two local databases, for SqlApplicationDataStore.
class QUILLON_API DatabaseNames {
public:
    DatabaseNames() = delete;

    static const char* const InventoryDatabaseName;  ///< "Inventory"
    static const char* const PolicyDatabaseName;     ///< "Policy"
};

}  // namespace quillon
