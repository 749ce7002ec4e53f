#include "content/ContentCopy.h"

#include <algorithm>
#include <utility>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"
#include "system/Sha256.h"

namespace quillon::agent {

namespace {

constexpr std::int64_t kPiece = 1024 * 1024;

CopyOutcome Differs(const std::string& fault) { return {InvocationResult::kContentDiffers, fault}; }

/// Until the source ends, or exceeds what is expected.
CopyOutcome CopyPieces(const ContentItem& item, SourceFile& source, NewFile& file, Progress& progress) {
    Sha256 hash;
    std::int64_t copied = 0;
    std::vector<char> piece(static_cast<std::size_t>(std::min(item.size, kPiece - 1) + 1));
    while (true) {
        if (IsEnding()) return {InvocationResult::kSystemFailure, "Aborted due to Agent shutdown", true};
        std::size_t count = piece.size();
        std::string fault = source.Read(piece.data(), count);
        if (!fault.empty()) return {InvocationResult::kSystemFailure, "cannot be read: " + fault};
        if (count == 0) break;
        copied += static_cast<std::int64_t>(count);
        if (copied > item.size) return Differs("is longer than " + std::to_string(item.size) + " bytes");
        hash.Add(piece.data(), count);
        fault = file.Write(piece.data(), count);
        if (!fault.empty()) return {InvocationResult::kSystemFailure, "cannot be written: " + fault};
        progress.Advance(static_cast<std::int64_t>(count));
    }
    if (copied < item.size)
        return Differs("has " + std::to_string(copied) + " bytes instead of " + std::to_string(item.size));
    return hash.Finish() == item.sha256 ? CopyOutcome() : Differs("has another SHA-256");
}

}  // namespace

bool IsSha256(const std::string& text) {
    constexpr std::size_t kDigits = 64;
    return text.size() == kDigits && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

bool IsEnding() {
    auto* const monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    return monitor != nullptr && monitor->IsShutdownRequested();
}

CopyOutcome CopyContent(const ContentItem& item, DestinationFolder& destination, Progress& progress) {
    SourceFile source;
    std::string fault = source.Open(item.source);
    if (!fault.empty()) return {InvocationResult::kSystemFailure, "cannot be read: " + fault};
    std::unique_ptr<NewFile> file;
    fault = destination.Create(item.components, file);
    if (!fault.empty()) return {InvocationResult::kSystemFailure, "cannot be written: " + fault};
    CopyOutcome outcome = CopyPieces(item, source, *file, progress);
    if (outcome.code != 0) return outcome;
    fault = file->Commit();
    return fault.empty() ? CopyOutcome()
                         : CopyOutcome{InvocationResult::kSystemFailure, "cannot be written: " + fault};
}

}  // namespace quillon::agent
