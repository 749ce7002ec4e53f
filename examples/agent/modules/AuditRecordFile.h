#pragma once

#include "sql/DatabaseFolder.h"

namespace quillon::agent {

/// Has SystemAuditProxy keep its record in the directory, in a file that no other agent uses meanwhile,
/// until the process ends: the record of an agent that was killed, which is restored, else a new one.
/// Without a free one among sixteen no record is kept. Thread-safe.
void KeepAuditRecord(const DatabaseFolder& folder);

}  // namespace quillon::agent
