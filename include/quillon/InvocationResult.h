#pragma once

#include <cstdint>
#include <string>

#include "quillon/DataTable.h"

namespace quillon {

/// Holds how the invocation of one method ended. The host makes and owns it; the method and the
/// library write into it, on the thread of the invocation.
struct InvocationResult {
    /// Values of resultCode. The library writes 0 and 2 to 5; a host and its modules use the others
    /// in the same sense, and may add codes above 7.
    enum Code : std::int32_t {
        kSucceeded = 0,
        kMethodThrew = 1,        ///< an exception left the method
        kBadParameter = 2,       ///< a parameter is missing, unknown, repeated, invalid or of the wrong type
        kSystemFailure = 3,      ///< the system refused, or a command failed, timed out or was aborted
        kNoContentProvider = 4,  ///< no provider of content downloads is registered
        kUnusableContentAnswer = 5,  ///< the provider did not say whether a download may begin
        kUnusableContentList = 6,    ///< a content list is unreadable, incomplete or not to be trusted
        kContentDiffers = 7,         ///< a downloaded file is not what its list says
    };

    /// Holds what the method returns, one row for each item; it has no rows when the method failed early.
    DataTable resultTable;
    std::int32_t resultCode = kSucceeded;
    /// Says to people, in UTF-8, why the invocation failed; empty when it did not.
    std::string errorMessage;
};

}  // namespace quillon
