#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>

#include "Utils/internal/EraseFailure.h"
#include "base/ErrorCodes.h"
#include "base/PathText.h"
#include "base/Utf8Cut.h"
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

/// Cuts a name, between characters, so that both systems take it with something behind it.
std::string ShortName(const std::string& name) {
    constexpr std::size_t kMost = 200;
    return std::string(base::CutUtf8(name, kMost));
}

/// Renames to a free name beside `to`, and returns it.
std::optional<std::string> MoveBeside(const std::string& from, const std::string& to) {
    constexpr int kMost = 1000;
    const auto [folder, name] = PlaceOf(to);
    const std::string begin = PathUtils::CombinePaths(folder, ShortName(name), PathUtils::PathSep);
    for (int number = 0; number < kMost; ++number) {
        std::string aside = begin + ".quillon-" + std::to_string(number);
        if (platform::MovePath(from, aside)) return aside;
        if (platform::LastError() != base::kAlreadyExists) break;
    }
    return std::nullopt;
}

/// Ends a move of what waits beside the target; where it cannot, it goes back.
bool MoveFromBeside(const std::string& aside, const std::string& from, const std::string& to, bool isFree) {
    if (isFree && platform::MovePath(aside, to)) return true;
    const std::uint32_t code = platform::LastError();
    platform::MovePath(aside, from);
    return platform::FailWithCode(code);
}

/// Both names lead to one file. Either they are spellings of one name, or there are two, of which one goes;
/// which of it is seen only when the first one is away.
bool MoveToOtherName(const std::string& from, const std::string& to) {
    if (IsSameName(from, to)) return true;
    const auto aside = MoveBeside(from, from);
    if (!aside) return false;
    const bool isFree = !FileSystemUtils::Exists(to) || FileSystemUtils::EraseFile(to, false);
    return MoveFromBeside(*aside, from, to, isFree);
}

bool MoveOverFile(const std::string& from, const std::string& to) {
    if (platform::MoveOverFile(from, to)) return true;
    const std::uint32_t code = platform::LastError();
    const bool isHeld = code == base::kAccessDenied || code == base::kSharingViolation;
    return isHeld && FailToErase(to);
}

/// Replaces a directory. Its erasure cannot be undone: it must be removable, and what is moved must be on its
/// volume, under a name beside it, before anything of it is erased.
bool MoveOverDirectory(const std::string& from, const std::string& to) {
    if (!platform::MayRemove(to)) return FailToErase(to);
    const auto aside = MoveBeside(from, to);
    if (!aside) return false;
    if (!FileSystemUtils::EraseFile(to, false)) FileSystemUtils::EraseDirectory(to);
    return MoveFromBeside(*aside, from, to, true);
}

bool MoveOver(const std::string& from, const std::string& to) {
    const auto target = platform::IdentityOf(to);
    if (!target) return platform::MovePath(from, to);  // it has gone meanwhile
    const auto source = platform::IdentityOf(from);
    if (!source) return false;
    if (*source == *target) return MoveToOtherName(from, to);
    const auto moved = platform::AttributesOf(from), old = platform::AttributesOf(to);
    if (!moved || !old) return false;
    if (old->isSpecial) return platform::FailWithCode(base::kAccessDenied) || FailToErase(to);
    const bool isDirectory = moved->isDirectory && !moved->isLink;
    if (!isDirectory && !old->isDirectory) return MoveOverFile(from, to);
    // Not every system replaces a link to a directory by a file.
    if (!isDirectory && old->isLink && platform::MoveOverFile(from, to)) return true;
    if (IsAbove(*target, from)) return platform::FailWithCode(base::kAlreadyExists);
    if (isDirectory && IsAbove(*source, to)) return platform::FailWithCode(base::kInvalidParameter);
    return MoveOverDirectory(from, to);
}

/// The name of a file's older copy; the file itself is number 0.
std::string Generation(const std::string& path, std::uint64_t number) {
    return number == 0 ? path : path + '.' + std::to_string(number);
}

}  // namespace

bool FileSystemUtils::RenameFile(const std::string& from, const std::string& to, bool overwrite) {
    if (!Exists(to)) return Moved(platform::MovePath(from, to));
    return overwrite ? Moved(MoveOver(from, to)) : platform::FailWithCode(base::kAlreadyExists);
}

bool FileSystemUtils::RenameGenerations(const std::string& path, std::uint32_t generations) {
    if (generations == 0) {
        if (ICLogger* const logger = detail::RegisteredLogger()) {
            logger->Error("Number of generations when renaming '%s' must be at least 1",
                          LogText::OneLine(path).c_str());
        }
        return platform::FailWithCode(base::kInvalidParameter);
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
