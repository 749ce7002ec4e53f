#include "sql/DatabaseFolder.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "common/Failure.h"
#include "common/TemporaryName.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

// With a prefix no name is that of a device.
constexpr std::string_view kPrefix = "db-", kSuffix = ".sqlite";
constexpr std::size_t kLongestCode = 200;  // of a file name's 255, what SQLite appends to it included
constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr char kEscape = '%';

std::string Encode(const std::string& name) {
    std::string code;
    for (const char c : StringUtils::ToLowercase(name)) {
        if (kPlain.find(c) != std::string_view::npos) {
            code += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            code += kEscape + StringUtils::ByteArrayToHexString(&byte, 1);
        }
    }
    return code;
}

/// Decodes a name; nothing when Encode() does not write such a text.
std::optional<std::string> Decode(const std::string& code) {
    std::string name = StringUtils::UrlDecode(code);
    return Encode(name) == code ? std::optional(std::move(name)) : std::nullopt;
}

/// Any module may change the working directory, and the databases would be missed.
std::string Fixed(const std::string& folder) {
    const bool isRelative =
        !folder.empty() && folder.find_first_of("\\/") != 0 && folder.substr(0, 2).find(':') != 1;
    const std::string working = isRelative ? FileSystemUtils::GetWorkingDirectory() : std::string();
    return working.empty() ? folder : PathUtils::CombinePaths(working, folder, PathUtils::PathSep);
}

}  // namespace

DatabaseFolder::DatabaseFolder(const std::string& folder) : m_folder(Fixed(folder)) {}

std::optional<std::string> DatabaseFolder::FileOf(const std::string& name) const {
    const std::string code = Encode(name);
    if (code.empty() || code.size() > kLongestCode) return std::nullopt;
    return PathUtils::CombinePaths(m_folder, std::string(kPrefix) + code + std::string(kSuffix),
                                   PathUtils::PathSep);
}

std::vector<std::string> DatabaseFolder::GetNames() const {
    std::vector<std::string> files, names;
    if (!FileSystemUtils::GetImmediateFilesWithin(m_folder, files)) {
        const std::string reason = LastFailure({kFileNotFound, kPathNotFound});  // the first store makes it
        if (!reason.empty()) throw std::runtime_error("The databases cannot be listed: " + reason);
    }
    for (const std::string& file : files) {
        if (file.size() <= kPrefix.size() + kSuffix.size()) continue;
        if (!file.starts_with(kPrefix) || !file.ends_with(kSuffix)) continue;
        const auto name = Decode(file.substr(kPrefix.size(), file.size() - kPrefix.size() - kSuffix.size()));
        if (name) names.push_back(*name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool DatabaseFolder::Contains(const std::string& name) const {
    const auto file = FileOf(name);
    return file && FileSystemUtils::Exists(*file);
}

bool DatabaseFolder::Make() const {
    if (FileSystemUtils::Exists(m_folder)) return true;
    std::string fresh = m_folder;
    while (fresh.ends_with('\\') || fresh.ends_with('/')) fresh.pop_back();
    fresh += MakeTemporaryName();
    // Stores and the files that SQLite puts beside them inherit the directory's rights, so it takes its name
    // when it has its own.
    if (FileSystemUtils::MakeDirectory(fresh) && FileSystemUtils::SecureFile(fresh) &&
        FileSystemUtils::RenameFile(fresh, m_folder, false))
        return true;
    if (FileSystemUtils::Exists(fresh)) FileSystemUtils::EraseDirectory(fresh);
    return FileSystemUtils::Exists(m_folder);  // another process was quicker
}

}  // namespace quillon::agent
