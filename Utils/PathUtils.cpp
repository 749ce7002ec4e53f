#include "quillon/PathUtils.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <vector>

#include "base/Characters.h"
#include "base/PathEscapes.h"
#include "base/PathText.h"
#include "platform/FileApi.h"
#include "platform/ModuleApi.h"

namespace quillon {

namespace {

template <class Text>
Text Joined(const Text& first, const Text& second, typename Text::value_type separator) {
    if (first.empty()) return second;
    if (second.empty()) return first;
    const bool ends = first.back() == separator;
    const bool begins = second.front() == separator;
    if (ends && begins) return first + second.substr(1);
    return ends || begins ? first + second : first + separator + second;
}

template <class Text>
Text PartBefore(const Text& path, typename Text::value_type separator) {
    const auto last = path.rfind(separator);
    return last == Text::npos ? Text() : path.substr(0, last);
}

template <class Text>
Text PartAfter(const Text& path, typename Text::value_type separator) {
    const auto last = path.rfind(separator);
    return last == Text::npos ? Text() : path.substr(last + 1);
}

template <class Text>
Text WithBackslashes(Text path) {
    using Char = typename Text::value_type;
    std::replace(path.begin(), path.end(), Char{'/'}, Char{'\\'});
    return path;
}

/// Length of what is not part of the elements: "C:", "//server", "//?/C:".
std::size_t RootLength(std::string_view path) {
    if (base::StartsWithDrive(path)) return 2;
    if (path.starts_with("//?/") && base::StartsWithDrive(path.substr(4))) return 6;
    const bool isNetwork = path.size() > 2 && path.starts_with("//") && path[2] != '/';
    return isNetwork ? std::min(path.find('/', 2), path.size()) : 0;
}

/// The elements between slashes, of which one or more separate two; one more, ".", for a slash at the end.
std::vector<std::string_view> ElementsOf(std::string_view path) {
    std::vector<std::string_view> elements;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin) elements.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    if (path.ends_with('/') && !elements.empty()) elements.push_back(".");
    return elements;
}

/// Normalises the part of a path after its root, which may begin with a slash, by the rules of
/// Normalise().
std::string NormaliseElements(std::string_view path) {
    const bool isAbsolute = path.starts_with('/');
    const auto elements = ElementsOf(path);
    std::vector<std::string_view> kept;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const bool isFirst = !isAbsolute && i == 0, isLast = i + 1 == elements.size();
        if (elements[i] == "." && !isFirst && !isLast) continue;
        if (elements[i] == ".." && !kept.empty() && kept.back() != "." && kept.back() != "..") {
            kept.pop_back();
            continue;
        }
        kept.push_back(elements[i]);
    }
    std::string result(isAbsolute ? "/" : "");
    for (const auto element : kept) result.append(element).push_back('/');
    if (!kept.empty()) result.pop_back();
    return result.empty() ? "." : result;
}

/// Returns true for most paths that are normal already: they have only backslashes, one at a time, and no
/// element that begins with a point.
bool IsSurelyNormal(std::string_view path) {
    char before = PathUtils::PathSep;
    for (const char c : path) {
        const bool begins = before == PathUtils::PathSep;
        if (c == '/' || (begins && c == PathUtils::PathSep)) return false;
        if (c == '.' && (begins || before == ':')) return false;
        before = c;
    }
    return before != PathUtils::PathSep;
}

std::string Normalised(const std::string& path) {
    std::string slashed = path;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    const std::size_t rootLength = RootLength(slashed);
    const std::string elements = slashed.substr(rootLength);
    std::string normal = elements.empty() ? std::string() : NormaliseElements(elements);
    // "C:a\..": what is left is the root, not the current directory.
    if (rootLength > 0 && normal == "." && elements != ".") normal.clear();
    std::string result = WithBackslashes(slashed.substr(0, rootLength) + normal);
    if (result.size() > 2 && result.ends_with("\\.")) result.resize(result.size() - 2);
    return result;
}

/// Returns the path without its last element, but with the separator of a drive's root.
std::string FolderOf(const std::string& file) {
    std::string folder = PartBefore(file, PathUtils::PathSep);
    if (folder.size() == 2 && base::StartsWithDrive(folder)) folder.push_back(PathUtils::PathSep);
    return folder;
}

/// A directory beside the executable, found once. Never destroyed: threads may ask while
/// the process ends.
class CachedFolder {
public:
    explicit CachedFolder(const char* name) : m_name(name) {}

    std::string Get() {
        const std::lock_guard lock(m_mutex);
        if (m_path.empty()) m_path = PathUtils::BuildFilenameRelativeToExecutableDirectory(m_name);
        return m_path;
    }

private:
    const char* m_name;
    std::mutex m_mutex;
    std::string m_path;
};

}  // namespace

const char PathUtils::PathSep = '\\';
const char PathUtils::WindowsPathSep = '\\';
const char PathUtils::HttpSep = '/';
const wchar_t PathUtils::wPathSep = L'\\';
const wchar_t PathUtils::wWindowsPathSep = L'\\';

std::string PathUtils::PathSepStr() { return {PathSep}; }
std::wstring PathUtils::wPathSepStr() { return {wPathSep}; }

std::string PathUtils::CombinePaths(const std::string& first, const std::string& second, char separator) {
    return Joined(first, second, separator);
}

std::wstring PathUtils::CombinePaths(const std::wstring& first, const std::wstring& second,
                                     wchar_t separator) {
    return Joined(first, second, separator);
}

std::string PathUtils::CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, char separator) {
    return CombinePaths(CombinePaths(first, second, separator), third, separator);
}

std::string PathUtils::CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, const std::string& fourth, char separator) {
    return CombinePaths(CombinePaths(first, second, separator), CombinePaths(third, fourth, separator),
                        separator);
}

std::string PathUtils::DirName(const std::string& path, char separator) {
    return PartBefore(path, separator);
}

std::wstring PathUtils::DirName(const std::wstring& path, wchar_t separator) {
    return PartBefore(path, separator);
}

std::string PathUtils::BaseName(const std::string& path, char separator) {
    const auto last = path.find_last_not_of(separator);
    if (last == std::string::npos) return {};
    const auto before = path.rfind(separator, last);
    const auto first = before == std::string::npos ? 0 : before + 1;
    return path.substr(first, last + 1 - first);
}

std::string PathUtils::FileName(const std::string& path) { return PartAfter(path, PathSep); }

std::wstring PathUtils::FileName(const std::wstring& path) { return PartAfter(path, wPathSep); }

std::string& PathUtils::Normalise(std::string& path) {
    if (!path.empty() && !IsSurelyNormal(path)) path = Normalised(path);
    return path;
}

std::wstring& PathUtils::Normalise(std::wstring& path) {
    if (!path.empty()) path = base::PathToWide(Normalised(base::PathToUtf8(path)));
    return path;
}

std::string PathUtils::HomogeniseSlashesForOs(const std::string& path) { return WithBackslashes(path); }

std::wstring PathUtils::HomogeniseSlashesForOs(const std::wstring& path) { return WithBackslashes(path); }

std::string PathUtils::ToSystemPath(const std::string& path) { return platform::SystemPath(path); }

std::string PathUtils::SanitizeTextForFilename(const std::string& text) {
    std::string result = text.substr(0, text.find('\0'));
    for (char& c : result) {
        if (!base::IsLetter(c) && !base::IsDigit(c)) c = '_';
    }
    return result;
}

std::string PathUtils::GetExecutableDirectory() {
    const auto path = platform::ExecutablePath();
    return path ? FolderOf(*path) : ".";
}

std::string PathUtils::BuildFilenameRelativeToExecutableDirectory(const std::string& name) {
    return CombinePaths(GetExecutableDirectory(), name, PathSep);
}

std::string PathUtils::GetLibraryLocation() {
    static CachedFolder& folder = *new CachedFolder("Extensibility");
    return folder.Get();
}

std::string PathUtils::GetSSLCertsDirectory() {
    static CachedFolder& folder = *new CachedFolder("SSLCerts");
    return folder.Get();
}

std::string PathUtils::BuildFilenameRelativeToStaticDataDirectory(const std::string& name) {
    auto folder = platform::CommonDataFolder();
    if (!folder) folder = platform::TemporaryFolder();
    if (!folder) return BuildFilenameRelativeToExecutableDirectory(name);
    return CombinePaths(*folder, R"(Quillon\Client)", name, PathSep);
}

std::string PathUtils::BuildFilenameRelativeToDynamicDataDirectory(const std::string& name) {
    return BuildFilenameRelativeToStaticDataDirectory(name);
}

}  // namespace quillon
