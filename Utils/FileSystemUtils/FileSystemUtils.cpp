#include "quillon/FileSystemUtils.h"

#include "Utils/internal/TreeWalk.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/KeptError.h"
#include "platform/TextApi.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using platform::FolderWalk;

bool LeadsToDirectory(const std::optional<platform::FileAttributes>& attributes) {
    return attributes && attributes->isDirectory;
}

/// A device path is opened by the name that the system's file functions take.
std::string ForOpening(const std::string& path) {
    const std::wstring given = base::ToWide(path);
    std::wstring name = given;
    FileSystemUtils::DeviceNameToVolumeNameFormat(name);
    return name == given ? path : base::ToUtf8(name);
}

/// The sizes of files, and why the first one that is not counted could not be.
class SizeSum final : public ITreeVisitor {
public:
    bool OnFile(FolderWalk& walk, const std::string&, const std::string& name) override {
        const auto size = walk.SizeOf(name);
        if (!size) Miss();
        m_bytes += size.value_or(0);
        return true;
    }
    bool OnFolderLink(FolderWalk&, const std::string&) override { return true; }
    bool AfterFolder(FolderWalk&, const std::string&) override { return true; }

    void Miss() {
        if (m_error == 0) m_error = platform::LastError();
    }
    /// Leaves the reason as the last error.
    std::uint64_t Bytes() const {
        platform::SetLastErrorCode(m_error);
        return m_bytes;
    }

private:
    std::uint64_t m_bytes = 0;
    std::uint32_t m_error = 0;
};

bool AddImmediateFiles(const std::string& directory, SizeSum& sum) {
    auto walk = FolderWalk::Open(directory, FolderWalk::Purpose::ToList);
    return walk && walk->List([&](platform::DirectoryEntry&& entry) {
        if (!entry.isDirectory) sum.OnFile(*walk, directory, entry.name);
    });
}

}  // namespace

bool FileSystemUtils::Exists(const char* path) { return platform::AttributesOf(path).has_value(); }

bool FileSystemUtils::Exists(const std::string& path) { return platform::AttributesOf(path).has_value(); }

bool FileSystemUtils::Exists(const wchar_t* path) { return Exists(std::wstring(path)); }

bool FileSystemUtils::Exists(const std::wstring& path) {
    const std::string narrow = platform::PathFromWide(path);
    if (platform::AttributesOf(narrow)) return true;
    const platform::KeptError error;
    const std::string reason = StringUtils::GetErrorAsString(static_cast<std::int32_t>(error.Code()));
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Debug("Cannot get attributes of '%s' because: %s", LogText::OneLine(narrow).c_str(),
                      reason.c_str());
    }
    return false;
}

bool FileSystemUtils::Exists(const char* path, bool& isDirectory, long long* modificationTime) {
    return Exists(std::string(path), isDirectory, modificationTime);
}

bool FileSystemUtils::Exists(const std::string& path, bool& isDirectory, long long* modificationTime) {
    std::string normalised = path;
    const auto status = platform::StatusOf(PathUtils::Normalise(normalised));
    if (!status) return false;
    isDirectory = status->isDirectory;
    if (modificationTime != nullptr) *modificationTime = status->modificationTime;
    return true;
}

bool FileSystemUtils::IsDirectory(const char* path) {
    return LeadsToDirectory(platform::AttributesOfAnsiPath(path));
}

bool FileSystemUtils::IsDirectory(const wchar_t* path) { return IsDirectory(std::wstring(path)); }

bool FileSystemUtils::IsDirectory(const std::string& path) {
    std::string normalised = path;
    return LeadsToDirectory(platform::AttributesOf(PathUtils::Normalise(normalised)));
}

bool FileSystemUtils::IsDirectory(const std::wstring& path) {
    return IsDirectory(platform::PathFromWide(path));
}

std::uint64_t FileSystemUtils::GetFileSizeInBytes(const std::string& path) {
    const auto size = platform::SizeOfFile(ForOpening(path));
    if (size) platform::SetLastErrorCode(0);
    return size.value_or(0);
}

std::uint64_t FileSystemUtils::GetDirectorySizeInBytes(const std::string& directory, bool recursive) {
    if (directory.empty()) {
        platform::SetLastErrorCode(base::kPathNotFound);
        return 0;
    }
    SizeSum sum;
    const bool isListed =
        recursive ? WalkTree(directory, FolderWalk::Purpose::ToList, sum) : AddImmediateFiles(directory, sum);
    if (!isListed) sum.Miss();
    return sum.Bytes();
}

bool FileSystemUtils::IsOperatingSystemProcess(const std::string&) { return false; }

}  // namespace quillon
