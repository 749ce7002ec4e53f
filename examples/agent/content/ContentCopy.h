#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "content/Progress.h"
#include "quillon/InvocationResult.h"
#include "system/ContentFiles.h"

namespace quillon::agent {

/// One file to copy, and what it must be. A list has hundreds of thousands of them, so it is small.
struct ContentItem {
    std::string name;  ///< below source and destination; checked, with backslashes between its components
    std::int64_t size = 0;
    std::string sha256;  ///< lower-case digits
};

struct CopyOutcome {
    std::int32_t code = InvocationResult::kSucceeded;
    std::string fault;
    bool isAborted = false;
};

/// Returns whether a text can be a SHA-256: 64 hexadecimal digits.
bool IsSha256(const std::string& text);

/// Returns whether the host is shutting down; false without a monitor.
bool IsEnding();

/// Copies one file under a temporary name when length and hash are those expected; else nothing of it
/// stays, and a file of that name stays as it was. `source` is a library path; `file` is to be committed; it
/// is null when the file is there already with this content, or after a fault. The host's shutdown ends it
/// between two pieces.
CopyOutcome PrepareContent(const ContentItem& item, const std::string& source, DestinationFolder& destination,
                           Progress& progress, std::unique_ptr<NewFile>& file);
/// Puts files in place, after one sync for them all where the system can; returns an outcome for each. A
/// null file gives success.
std::vector<CopyOutcome> CommitContent(DestinationFolder& destination,
                                       std::vector<std::unique_ptr<NewFile>>& files);
/// Does both for one file.
CopyOutcome CopyContent(const ContentItem& item, const std::string& source, DestinationFolder& destination,
                        Progress& progress);

}  // namespace quillon::agent
