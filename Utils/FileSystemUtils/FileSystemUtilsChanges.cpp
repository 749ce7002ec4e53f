#include <cerrno>
#include <mutex>
#include <optional>

#include "Utils/internal/TreeWalk.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using platform::FolderWalk;

/// Logs the failure and returns false; the last error stays for the caller.
bool FailToErase(const std::string& path) {
    const std::uint32_t code = platform::LastError();  // logging overwrites it
    const DestructorFunctor restore([code] { platform::SetLastErrorCode(code); });
    const std::string reason = StringUtils::GetErrorAsString(static_cast<std::int32_t>(code));
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Error("Cannot delete '%s' because: %s", path.c_str(), reason.c_str());
    }
    return false;
}

class Eraser final : public ITreeVisitor {
public:
    bool OnFile(FolderWalk& walk, const std::string& folder, const std::string& name) override {
        return walk.RemoveFile(name) ||
               FailToErase(PathUtils::CombinePaths(folder, name, PathUtils::PathSep));
    }
    bool OnFolderLink(FolderWalk& walk, const std::string& name) override {
        return walk.RemoveEmptyDirectory(name);
    }
    bool AfterFolder(FolderWalk& walk, const std::string& name) override {
        return walk.RemoveEmptyDirectory(name);
    }
};

bool Move(const std::string& from, const std::string& to) {
    if (platform::MovePath(from, to)) return true;
    errno = static_cast<int>(platform::LastError());
    return false;
}

/// The name of a file's older copy; the file itself is number 0.
std::string Generation(const std::string& path, std::uint64_t number) {
    return number == 0 ? path : path + '.' + std::to_string(number);
}

}  // namespace

bool FileSystemUtils::EraseFile(const char* path, bool quiet) { return EraseFile(std::string(path), quiet); }

bool FileSystemUtils::EraseFile(const std::string& path, bool quiet) {
    return platform::RemoveFile(path) || (!quiet && FailToErase(path));
}

bool FileSystemUtils::EraseDirectory(const std::string& directory) {
    const auto attributes = directory.empty() ? std::nullopt : platform::AttributesOf(directory);
    if (!attributes || !attributes->isDirectory) return false;
    Eraser eraser;
    const bool isEmpty = attributes->isLink || WalkTree(directory, FolderWalk::Purpose::ToErase, eraser);
    return isEmpty && platform::RemoveEmptyDirectory(directory);
}

bool FileSystemUtils::MakeDirectories(const std::string& path) {
    std::vector<std::string> missing;
    std::string ancestor = PathUtils::DirName(path, PathUtils::PathSep);
    while (!ancestor.empty() && !Exists(ancestor)) {
        missing.push_back(ancestor);
        ancestor = PathUtils::DirName(ancestor, PathUtils::PathSep);
    }
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (!platform::MakeOneDirectory(*next)) return false;
    }
    return true;
}

bool FileSystemUtils::MakeDirectory(const std::string& path) {
    return MakeDirectories(path) && platform::MakeOneDirectory(path);
}

bool FileSystemUtils::RenameFile(const std::string& from, const std::string& to, bool overwrite) {
    if (Exists(to)) {
        if (!overwrite) return false;
        if (!EraseFile(to, false)) EraseDirectory(to);
    }
    return Move(from, to);
}

bool FileSystemUtils::RenameGenerations(const std::string& path, std::uint32_t generations) {
    if (generations == 0) {
        if (ICLogger* const logger = detail::RegisteredLogger()) {
            logger->Error("Number of generations when renaming '%s' must be at least 1", path.c_str());
        }
        return false;
    }
    EraseFile(Generation(path, generations), true);
    std::uint64_t count = 0;
    while (Exists(Generation(path, count))) ++count;
    while (count > 0) {
        --count;
        if (!Move(Generation(path, count), Generation(path, count + 1))) return false;
    }
    return true;
}

bool FileSystemUtils::DuplicateFile(const std::string& from, const std::string& to) {
    return platform::CopyFileOver(from, to);
}

std::string FileSystemUtils::GetTemporaryFile() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return platform::CreateTemporaryFile(GetSystemTempPath(), "vnt").value_or("");
}

std::string FileSystemUtils::GetTemporaryDirectory() {
    std::string path = GetTemporaryFile();
    EraseFile(path, false);
    platform::MakeTemporaryDirectoryAnsi(path);
    return path;
}

}  // namespace quillon
