#include "content/ContentCopy.h"

#include <algorithm>
#include <utility>

#include "quillon/IShutdownMonitor.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "system/Sha256.h"

namespace quillon::agent {

namespace {

constexpr std::int64_t kPiece = 1024 * 1024;

CopyOutcome Differs(const std::string& fault) { return {InvocationResult::kContentDiffers, fault}; }

CopyOutcome NotWritten(const std::string& fault) {
    return {InvocationResult::kSystemFailure, "cannot be written: " + fault};
}

std::vector<std::string> ComponentsOf(const ContentItem& item) {
    std::vector<std::string> components;
    StringUtils::SplitByChar(item.name, PathUtils::PathSep, components);
    return components;
}

/// Whether the file is there with the expected content, so that a download goes on where another ended.
bool IsThere(const ContentItem& item, DestinationFolder& destination) {
    SourceFile file;
    if (!destination.OpenExisting(ComponentsOf(item), file).empty() || file.Size() != item.size) return false;
    Sha256 hash;
    std::vector<char> piece(static_cast<std::size_t>(std::min(item.size, kPiece - 1) + 1));
    for (std::int64_t left = item.size; !IsEnding();) {
        std::size_t count = piece.size();
        if (!file.Read(piece.data(), count).empty()) return false;
        left -= static_cast<std::int64_t>(count);
        if (left < 0) return false;
        if (count == 0) return left == 0 && hash.Finish() == item.sha256;
        hash.Add(piece.data(), count);
    }
    return false;
}

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
    const std::string sum = hash.Finish();
    if (sum.empty())
        return {InvocationResult::kSystemFailure, "cannot be checked, as no SHA-256 can be made"};
    return sum == item.sha256 ? CopyOutcome() : Differs("has another SHA-256");
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

CopyOutcome PrepareContent(const ContentItem& item, const std::string& source, DestinationFolder& destination,
                           Progress& progress, std::unique_ptr<NewFile>& file) {
    if (IsThere(item, destination)) {
        progress.Advance(item.size);
        return {};
    }
    SourceFile content;
    std::string fault = content.Open(source);
    if (!fault.empty()) return {InvocationResult::kSystemFailure, "cannot be read: " + fault};
    std::unique_ptr<NewFile> made;
    fault = destination.Create(ComponentsOf(item), made);
    if (!fault.empty()) return NotWritten(fault);
    CopyOutcome outcome = CopyPieces(item, content, *made, progress);
    if (outcome.code == 0) file = std::move(made);
    return outcome;
}

std::vector<CopyOutcome> CommitContent(DestinationFolder& destination,
                                       std::vector<std::unique_ptr<NewFile>>& files) {
    const bool isSynced = files.size() > 1 && destination.Sync();
    std::vector<CopyOutcome> outcomes;
    for (const std::unique_ptr<NewFile>& file : files) {
        const std::string fault = !file ? "" : isSynced ? file->CommitSynced() : file->Commit();
        outcomes.push_back(fault.empty() ? CopyOutcome() : NotWritten(fault));
    }
    files.clear();
    return outcomes;
}

CopyOutcome CopyContent(const ContentItem& item, const std::string& source, DestinationFolder& destination,
                        Progress& progress) {
    std::vector<std::unique_ptr<NewFile>> files(1);
    const CopyOutcome outcome = PrepareContent(item, source, destination, progress, files.front());
    return outcome.code == 0 ? CommitContent(destination, files).front() : outcome;
}

}  // namespace quillon::agent
