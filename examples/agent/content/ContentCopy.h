#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "content/Progress.h"
#include "quillon/InvocationResult.h"
#include "system/ContentFiles.h"

namespace quillon::agent {

/// One file to copy, and what it must be.
struct ContentItem {
    std::string source;                   ///< a library path
    std::vector<std::string> components;  ///< below the destination
    std::int64_t size = 0;
    std::string sha256;  ///< lower-case digits
};

struct CopyOutcome {
    std::int32_t code = InvocationResult::kSucceeded;
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
