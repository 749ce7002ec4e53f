#pragma once

#include <cstdint>
#include <string>

#include "quillon/DataTable.h"

namespace quillon {

/// The host's record of how one method invocation ended; the library fills it in place.
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

    DataTable resultTable;
    std::int32_t resultCode = kSucceeded;
    /// For people, UTF-8; empty when there is none.
    std::string errorMessage;
};

}  // namespace quillon
