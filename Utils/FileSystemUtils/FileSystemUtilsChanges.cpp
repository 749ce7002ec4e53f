#include <mutex>
#include <optional>

#include "Utils/internal/EraseFailure.h"
#include "Utils/internal/TreeWalk.h"
#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/KeptError.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using platform::FolderWalk;

constexpr const char* kTemporaryPrefix = "vnt";

std::mutex& TemporaryNames() {
    static std::mutex& mutex = *new std::mutex;  // threads may ask while the process ends
    return mutex;
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

/// A volume's name behind "\\?\" leads to its root only with a separator.
bool IsThere(const std::string& ancestor) {
    return FileSystemUtils::Exists(ancestor) || FileSystemUtils::Exists(ancestor + PathUtils::PathSep);
}

}  // namespace

bool FailToErase(const std::string& path) {
    const platform::KeptError error;
    const std::string reason = StringUtils::GetErrorAsString(static_cast<std::int32_t>(error.Code()));
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Error("Cannot delete '%s' because: %s", LogText::OneLine(path).c_str(), reason.c_str());
    }
    return false;
}

bool FileSystemUtils::EraseFile(const char* path, bool quiet) { return EraseFile(std::string(path), quiet); }

bool FileSystemUtils::EraseFile(const std::string& path, bool quiet) {
    return platform::RemoveFile(path) || (!quiet && FailToErase(path));
}

bool FileSystemUtils::EraseDirectory(const std::string& directory) {
    if (directory.empty()) return platform::FailWithCode(base::kPathNotFound);
    const auto attributes = platform::AttributesOf(directory);
    if (!attributes) return false;
    if (!attributes->isDirectory) return platform::FailWithCode(base::kInvalidDirectory);
    Eraser eraser;
    const bool isEmpty = attributes->isLink || WalkTree(directory, FolderWalk::Purpose::ToErase, eraser);
    return isEmpty && platform::RemoveEmptyDirectory(directory);
}

bool FileSystemUtils::MakeDirectories(const std::string& path) {
    // No system has longer paths, and the ancestors of one could take any time and memory.
    constexpr std::size_t kLongest = std::size_t{3} * 32'767;
    if (path.size() > kLongest) return platform::FailWithCode(base::kNameTooLong);
    std::vector<std::size_t> missing;  // lengths
    std::string ancestor = PathUtils::DirName(path, PathUtils::PathSep);
    while (!ancestor.empty() && !IsThere(ancestor)) {
        missing.push_back(ancestor.size());
        ancestor = PathUtils::DirName(ancestor, PathUtils::PathSep);
    }
    for (auto length = missing.rbegin(); length != missing.rend(); ++length) {
        ancestor = path.substr(0, *length);
        if (platform::MakeOneDirectory(ancestor)) continue;
        const bool isOthers = platform::LastError() == base::kAlreadyExists && IsDirectory(ancestor);
        if (!isOthers) return false;  // else another thread was faster
    }
    return true;
}

bool FileSystemUtils::MakeDirectory(const std::string& path) {
    return MakeDirectories(path) && platform::MakeOneDirectory(path);
}

bool FileSystemUtils::DuplicateFile(const std::string& from, const std::string& to) {
    return platform::CopyFileOver(from, to);
}

std::string FileSystemUtils::GetTemporaryFile() {
    const std::lock_guard lock(TemporaryNames());
    return platform::CreateTemporaryFile(GetSystemTempPath(), kTemporaryPrefix).value_or("");
}

std::string FileSystemUtils::GetTemporaryDirectory() {
    {
        const std::lock_guard lock(TemporaryNames());
        const auto directory = platform::CreateTemporaryDirectory(GetSystemTempPath(), kTemporaryPrefix);
        if (directory) return *directory;
    }
    // Callers get a path also when there is no directory: that of a file, if one can be made.
    const platform::KeptError whyThereIsNone;
    std::string path = GetTemporaryFile();
    EraseFile(path, false);
    return path;
}

}  // namespace quillon
