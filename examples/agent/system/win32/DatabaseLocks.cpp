#include "system/DatabaseLocks.h"

namespace quillon::agent {

void KeepDatabaseLocks() {}

}  // namespace quillon::agent
