#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quillon/UniqueIdentifier.h"

namespace quillon {

/// A sub-category that the proxy has switched on, and its bits before.
struct AuditRecordEntry {
    UniqueIdentifier id;
    std::uint32_t bitsBefore = 0;
};

/// Reads what a former process wrote down, whole or, when it was killed while it wrote, in the newer or
/// the older state. A file that is missing has no entries. Nothing is logged.
std::vector<AuditRecordEntry> ReadAuditRecord(const std::string& path);
/// Replaces the record; without entries the file goes. False with the reason as the last error.
bool WriteAuditRecord(const std::string& path, const std::vector<AuditRecordEntry>& entries);

}  // namespace quillon
