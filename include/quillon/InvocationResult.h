#pragma once

#include <cstdint>
#include <string>

#include "quillon/DataTable.h"

namespace quillon {

/// The host's record of how one method invocation ended; the library fills it in
/// place. Codes that the library writes: 0 not failed; 2 a parameter is missing,
/// unknown, repeated, invalid or of the wrong type; 3 an operating-system error or
/// a failed, timed-out or aborted command; 4 and 5 content download.
struct InvocationResult {
    DataTable resultTable;
    std::int32_t resultCode = 0;
    /// For people, UTF-8; empty when there is none.
    std::string errorMessage;
};

}  // namespace quillon
