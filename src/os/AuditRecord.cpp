#include "os/AuditRecord.h"

#include <string_view>

#include "base/ErrorCodes.h"
#include "base/NumberText.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"

namespace quillon {

namespace {

constexpr std::uint64_t kLargestRecord = 64 * 1024;
constexpr const char* kNew = ".new";
constexpr std::size_t kIdLength = 36;

/// A line is the identifier, a blank and the bits; any other is left out.
void ReadLine(std::string_view line, std::vector<AuditRecordEntry>& entries) {
    if (line.size() <= kIdLength || line[kIdLength] != ' ') return;
    bool isIdentifier = false;
    const auto id = UniqueIdentifier::Parse(std::string(line.substr(0, kIdLength)), &isIdentifier);
    line.remove_prefix(kIdLength);
    const auto bits = base::TakeUnsigned(line);
    if (isIdentifier && bits) entries.push_back({id, static_cast<std::uint32_t>(*bits)});
}

bool Remove(const std::string& path) {
    return platform::RemoveFile(path) || platform::LastError() == base::kFileNotFound;
}

}  // namespace

std::vector<AuditRecordEntry> ReadAuditRecord(const std::string& path) {
    auto text = platform::ReadWholeFile(path, kLargestRecord);
    if (!text) text = platform::ReadWholeFile(path + kNew, kLargestRecord);
    std::vector<AuditRecordEntry> entries;
    std::string_view left = text ? std::string_view(*text) : std::string_view();
    for (auto end = left.find('\n'); end != std::string_view::npos; end = left.find('\n')) {
        ReadLine(left.substr(0, end), entries);
        left.remove_prefix(end + 1);
    }
    return entries;
}

bool WriteAuditRecord(const std::string& path, const std::vector<AuditRecordEntry>& entries) {
    if (entries.empty()) return Remove(path) && Remove(path + kNew);
    std::string text;
    for (const AuditRecordEntry& entry : entries)
        text += entry.id.ToString() + ' ' + std::to_string(entry.bitsBefore) + '\n';
    return platform::WriteWholeFile(path + kNew, text, {}, platform::WriteMode::Truncate) && Remove(path) &&
           platform::MovePath(path + kNew, path);
}

}  // namespace quillon
