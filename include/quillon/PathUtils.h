#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Path texts: narrow ones are UTF-8, separators are backslashes. Apart from the
/// folder queries nothing here touches the file system. Any thread.
class QUILLON_API PathUtils {
public:
    PathUtils() = delete;

    static const char PathSep;
    static const char WindowsPathSep;
    static const char HttpSep;
    static const wchar_t wPathSep;
    static const wchar_t wWindowsPathSep;
    static std::string PathSepStr();
    static std::wstring wPathSepStr();

    /// Exactly one separator at the joint; an empty part gives the other unchanged.
    static std::string CombinePaths(const std::string& first, const std::string& second, char separator);
    static std::wstring CombinePaths(const std::wstring& first, const std::wstring& second,
                                     wchar_t separator);
    static std::string CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, char separator);
    static std::string CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, const std::string& fourth, char separator);
    /// Everything before the last separator; empty when there is none.
    static std::string DirName(const std::string& path, char separator);
    static std::wstring DirName(const std::wstring& path, wchar_t separator);
    /// The last element, trailing separators ignored.
    static std::string BaseName(const std::string& path, char separator);
    /// The text after the last backslash; empty when there is none.
    static std::string FileName(const std::string& path);
    static std::wstring FileName(const std::wstring& path);
    /// Lexical, in place: "." and "name\.." go, slashes become backslashes.
    static std::string& Normalise(std::string& path);
    static std::wstring& Normalise(std::wstring& path);
    static std::string HomogeniseSlashesForOs(const std::string& path);
    static std::wstring HomogeniseSlashesForOs(const std::wstring& path);
    /// Every byte that is no ASCII letter or digit becomes '_'; ends at a zero byte.
    static std::string SanitizeTextForFilename(const std::string& text);

    /// The folder of the host's executable, "." when it cannot be had.
    static std::string GetExecutableDirectory();
    static std::string BuildFilenameRelativeToExecutableDirectory(const std::string& name);
    /// "Extensibility" beside the executable; computed once.
    static std::string GetLibraryLocation();
    /// "SSLCerts" beside the executable; computed once.
    static std::string GetSSLCertsDirectory();
    /// In the common application-data folder's "Quillon\Client", else in the
    /// temporary folder's, else beside the executable. The folder is not created.
    static std::string BuildFilenameRelativeToStaticDataDirectory(const std::string& name);
    static std::string BuildFilenameRelativeToDynamicDataDirectory(const std::string& name);
};

}  // namespace quillon
