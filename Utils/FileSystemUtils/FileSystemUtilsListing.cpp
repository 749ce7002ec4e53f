#include "Utils/internal/TreeWalk.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/TextApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using platform::DirectoryEntry;
using platform::FolderWalk;

template <class Text>
std::uint32_t FindFilesInto(const std::string& pattern, std::vector<Text>* files,
                            Text (*convert)(std::string)) {
    std::string directory = PathUtils::DirName(pattern, PathUtils::PathSep);
    if (directory.empty()) directory = PathUtils::PathSepStr();
    std::uint32_t count = 0;
    const bool isSearched = platform::EnumerateMatches(pattern, [&](const DirectoryEntry& entry) {
        if (entry.isDirectory) return true;
        ++count;
        if (files != nullptr) {
            files->push_back(convert(PathUtils::CombinePaths(directory, entry.name, PathUtils::PathSep)));
        }
        return true;
    });
    if (isSearched) platform::SetLastErrorCode(count > 0 ? 0 : base::kFileNotFound);
    return count;
}

std::string AsItIs(std::string path) { return path; }

std::wstring AsWide(std::string path) { return platform::PathToWide(path); }

bool FailWithoutPath() {
    platform::SetLastErrorCode(base::kPathNotFound);
    return false;
}

bool ListNames(const std::string& directory, bool wantsDirectories, std::vector<std::string>& names) {
    if (directory.empty()) return FailWithoutPath();
    auto walk = FolderWalk::Open(directory, FolderWalk::Purpose::ToList);
    return walk && walk->List([&](DirectoryEntry&& entry) {
        if (entry.isDirectory == wantsDirectories) names.push_back(std::move(entry.name));
    });
}

class PathCollector final : public ITreeVisitor {
public:
    explicit PathCollector(std::vector<std::string>& files) : m_files(files) {}

    bool OnFile(FolderWalk&, const std::string& folder, const std::string& name) override {
        m_files.push_back(PathUtils::CombinePaths(folder, name, PathUtils::PathSep));
        return true;
    }
    bool OnFolderLink(FolderWalk&, const std::string&) override { return true; }
    bool AfterFolder(FolderWalk&, const std::string&) override { return true; }

private:
    std::vector<std::string>& m_files;
};

}  // namespace

std::uint32_t FileSystemUtils::FindFiles(const char* pattern, std::vector<std::string>* files) {
    return FindFilesInto(pattern, files, AsItIs);
}

std::uint32_t FileSystemUtils::FindFiles(const std::string& pattern, std::vector<std::string>* files) {
    return FindFilesInto(pattern, files, AsItIs);
}

std::uint32_t FileSystemUtils::FindFiles(const wchar_t* pattern, std::vector<std::wstring>* files) {
    return FindFilesInto(platform::PathFromWide(pattern), files, AsWide);
}

std::uint32_t FileSystemUtils::FindFiles(const std::wstring& pattern, std::vector<std::wstring>* files) {
    return FindFilesInto(platform::PathFromWide(pattern), files, AsWide);
}

std::uint32_t FileSystemUtils::FindFilesExpandingEnvVars(const std::string& pattern,
                                                         std::vector<std::string>* files) {
    // The expansion would end at a NUL, for which the pattern is refused.
    if (pattern.find('%') == std::string::npos || pattern.find('\0') != std::string::npos)
        return FindFiles(pattern, files);
    // The narrow expansion works in the ANSI code page, and the pattern is UTF-8.
    const std::wstring expanded = StringUtils::ExpandEnvironmentVariables(base::ToWide(pattern));
    return FindFiles(base::ToUtf8(expanded), files);
}

std::uint32_t FileSystemUtils::FindFilesExpandingEnvVars(const std::wstring& pattern,
                                                         std::vector<std::wstring>* files) {
    if (pattern.find(L'\0') != std::wstring::npos) return FindFiles(pattern, files);
    return FindFiles(StringUtils::ExpandEnvironmentVariables(pattern), files);
}

bool FileSystemUtils::GetAllFilesWithin(const std::string& directory, std::vector<std::string>& files) {
    PathCollector collector(files);
    if (directory.empty()) return FailWithoutPath();
    return WalkTree(directory, FolderWalk::Purpose::ToList, collector);
}

bool FileSystemUtils::GetImmediateFilesWithin(const std::string& directory, std::vector<std::string>& names) {
    return ListNames(directory, false, names);
}

bool FileSystemUtils::GetImmediateDirectoriesWithin(const std::string& directory,
                                                    std::vector<std::string>& names) {
    return ListNames(directory, true, names);
}

bool FileSystemUtils::GetFixedDisks(std::vector<std::wstring>& disks) {
    const std::vector<std::string> roots = platform::LogicalDrives();
    for (const std::string& root : roots) {
        if (platform::IsFixedDrive(root)) disks.push_back(base::ToWide(root.substr(0, root.find('\\'))));
    }
    return !roots.empty();
}

}  // namespace quillon
