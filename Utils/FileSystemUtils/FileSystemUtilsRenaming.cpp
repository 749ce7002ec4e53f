#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>

#include "Utils/internal/EraseFailure.h"
#include "base/ErrorCodes.h"
#include "base/PathText.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using platform::FileIdentity;

bool Fail(std::uint32_t code) {
    platform::SetLastErrorCode(code);
    return false;
}

/// Tells a failed move to callers who read errno.
bool Moved(bool isMoved) {
    if (!isMoved) errno = static_cast<int>(platform::LastError());
    return isMoved;
}

struct Place {
    std::string folder, name;
};

/// Splits a path at its last separator; "." stands for the folder of a name alone.
Place PlaceOf(std::string path) {
    while (path.size() > 1 && base::IsSeparator(path.back())) path.pop_back();
    std::size_t begin = path.find_last_of("\\/") + 1;  // 0 when there is none
    if (begin == 0 && base::StartsWithDrive(path)) begin = 2;
    std::string folder = path.substr(0, begin);
    if (folder.empty() || folder.back() == ':') folder += '.';
    return {std::move(folder), path.substr(begin)};
}

/// Returns whether the directory of this identity holds the path, at any depth.
bool IsAbove(const FileIdentity& directory, const std::string& path) {
    std::optional<std::string> folder = platform::ResolvedFolder(PlaceOf(path).folder);
    while (folder && !folder->empty()) {
        const auto identity = platform::IdentityOf(folder->ends_with(':') ? *folder + '\\' : *folder);
        if (!identity || *identity == directory) return identity.has_value();
        folder = PathUtils::DirName(*folder, PathUtils::PathSep);
    }
    return false;
}

bool IsSameName(const std::string& a, const std::string& b) {
    const Place first = PlaceOf(a), second = PlaceOf(b);
    if (first.name != second.name) return false;
    const auto folder = platform::ResolvedFolder(first.folder);
    return folder && platform::ResolvedFolder(second.folder) == folder;
}

/// Renames to a name beside that is free, and returns it.
std::optional<std::string> MoveAside(const std::string& path) {
    constexpr int kMost = 1000;
    const auto [folder, name] = PlaceOf(path);
    for (int number = 0; number < kMost; ++number) {
        std::string aside =
            PathUtils::CombinePaths(folder, name + ".quillon-" + std::to_string(number), PathUtils::PathSep);
        if (platform::MovePath(path, aside)) return aside;
        if (platform::LastError() != base::kAlreadyExists) break;
    }
    return std::nullopt;
}

/// Both names lead to one file. Either they are spellings of one name, or there are two, of which one goes;
/// which of it is seen only when the first one is away.
bool MoveToOtherName(const std::string& from, const std::string& to) {
    if (IsSameName(from, to)) return true;
    const auto aside = MoveAside(from);
    if (!aside) return false;
    const bool isFree = !FileSystemUtils::Exists(to) || FileSystemUtils::EraseFile(to, false);
    if (isFree && platform::MovePath(*aside, to)) return true;
    const std::uint32_t code = platform::LastError();
    platform::MovePath(*aside, from);
    return Fail(code);
}

bool MoveOverFile(const std::string& from, const std::string& to) {
    if (platform::MoveOverFile(from, to)) return true;
    const std::uint32_t code = platform::LastError();
    const bool isHeld = code == base::kAccessDenied || code == base::kSharingViolation;
    return isHeld && FailToErase(to);
}

/// Fails for a move that the system would refuse when its target is erased already.
bool CheckReplacement(const std::string& from, const FileIdentity& source, bool isDirectory,
                      const std::string& to, const FileIdentity& target) {
    if (IsAbove(target, from)) return Fail(base::kAlreadyExists);
    if (!isDirectory) return true;
    if (IsAbove(source, to)) return Fail(base::kInvalidParameter);
    const auto folder = platform::ResolvedFolder(PlaceOf(to).folder);
    const auto place = folder ? platform::IdentityOf(*folder) : std::nullopt;
    return !place || place->volume == source.volume || Fail(base::kNotSameDevice);
}

bool MoveOver(const std::string& from, const std::string& to) {
    const auto target = platform::IdentityOf(to);
    if (!target) return platform::MovePath(from, to);  // it has gone meanwhile
    const auto source = platform::IdentityOf(from);
    if (!source) return false;
    if (*source == *target) return MoveToOtherName(from, to);
    const auto moved = platform::AttributesOf(from), old = platform::AttributesOf(to);
    if (!moved || !old) return false;
    const bool isDirectory = moved->isDirectory && !moved->isLink;
    if (!isDirectory && !old->isDirectory) return MoveOverFile(from, to);
    // Not every system replaces a link to a directory by a file.
    if (!isDirectory && old->isLink && platform::MoveOverFile(from, to)) return true;
    if (!CheckReplacement(from, *source, isDirectory, to, *target)) return false;
    if (!FileSystemUtils::EraseFile(to, false)) FileSystemUtils::EraseDirectory(to);
    return platform::MovePath(from, to);
}

/// The name of a file's older copy; the file itself is number 0.
std::string Generation(const std::string& path, std::uint64_t number) {
    return number == 0 ? path : path + '.' + std::to_string(number);
}

}  // namespace

bool FileSystemUtils::RenameFile(const std::string& from, const std::string& to, bool overwrite) {
    if (!Exists(to)) return Moved(platform::MovePath(from, to));
    return overwrite ? Moved(MoveOver(from, to)) : Fail(base::kAlreadyExists);
}

bool FileSystemUtils::RenameGenerations(const std::string& path, std::uint32_t generations) {
    if (generations == 0) {
        if (ICLogger* const logger = detail::RegisteredLogger()) {
            logger->Error("Number of generations when renaming '%s' must be at least 1",
                          LogText::OneLine(path).c_str());
        }
        return Fail(base::kInvalidParameter);
    }
    EraseFile(Generation(path, generations), true);
    std::uint64_t count = 0;
    while (Exists(Generation(path, count))) ++count;
    while (count > 0) {
        --count;
        if (!Moved(platform::MovePath(Generation(path, count), Generation(path, count + 1)))) return false;
    }
    return true;
}

}  // namespace quillon
