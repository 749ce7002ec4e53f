#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "content/Progress.h"
#include "system/ContentFiles.h"

namespace quillon::agent {

/// How a download ends, beside 0 and the codes 2 to 5 of InvocationResult.
enum ContentCode : std::int32_t {
    kContentFailed = 3,   ///< the system refused something, or the agent is shutting down
    kListUnusable = 6,    ///< the list cannot be read, is not complete, or not to be trusted
    kContentDiffers = 7,  ///< a file is not what was expected
};

/// One file to copy, and what it must be.
struct ContentItem {
    std::string source;                   ///< a library path
    std::vector<std::string> components;  ///< below the destination
    std::int64_t size = 0;
    std::string sha256;  ///< lower-case digits
};

struct CopyOutcome {
    std::int32_t code = 0;
    std::string fault;
    bool isAborted = false;
};

/// Whether a text can be a SHA-256: 64 hexadecimal digits.
bool IsSha256(const std::string& text);

/// The host is shutting down; false without a monitor.
bool IsEnding();

/// Copies one file under a temporary name and gives it its own when length and hash are
/// those expected; else nothing of it stays, and a file of that name stays as it was.
/// The host's shutdown ends it between two pieces.
CopyOutcome CopyContent(const ContentItem& item, DestinationFolder& destination, Progress& progress);

}  // namespace quillon::agent
