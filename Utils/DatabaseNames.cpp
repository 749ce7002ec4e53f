#include "quillon/DatabaseNames.h"

namespace quillon {

const char* const DatabaseNames::InventoryDatabaseName = "Inventory";
const char* const DatabaseNames::PolicyDatabaseName = "Policy";

}  // namespace quillon
