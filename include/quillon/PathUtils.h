#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Joins, splits and normalises path texts, and names the agent's places.
///
/// The library's paths are Windows paths on every system: backslashes separate. Narrow paths
/// are UTF-8, wide ones UTF-16. Only the operations that name a place ask the system; the
/// others look at the text alone and do not care whether anything exists. Nothing is logged,
/// nothing throws, and every operation is thread-safe.
///
/// @code
/// const std::string log = PathUtils::CombinePaths("C:\\logs\\", "agent.log", PathUtils::PathSep);
/// std::cout << PathUtils::DirName(log, PathUtils::PathSep) << '\n';  // C:\logs
/// std::string path = "C:/data/../logs/./agent.log";
/// std::cout << PathUtils::Normalise(path) << '\n';  // C:\logs\agent.log
/// std::cout << PathUtils::BuildFilenameRelativeToStaticDataDirectory("state.db") << '\n';
/// @endcode
class QUILLON_API PathUtils {
public:
    PathUtils() = delete;

    /// Holds the separators: a backslash in paths, on every system, and a slash in URLs.
    static const char PathSep;
    static const char WindowsPathSep;
    static const char HttpSep;
    static const wchar_t wPathSep;
    static const wchar_t wWindowsPathSep;
    /// Returns the backslash as a text of one character.
    static std::string PathSepStr();
    static std::wstring wPathSepStr();

    /// Joins the parts with one separator in between: one is added when neither side has it and
    /// dropped when both have, further ones stay. An empty part gives the other unchanged.
    static std::string CombinePaths(const std::string& first, const std::string& second, char separator);
    static std::wstring CombinePaths(const std::wstring& first, const std::wstring& second,
                                     wchar_t separator);
    static std::string CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, char separator);
    static std::string CombinePaths(const std::string& first, const std::string& second,
                                    const std::string& third, const std::string& fourth, char separator);
    /// Returns everything before the last separator, the empty text when there is none. A
    /// drive's root loses its separator: "C:\a" gives "C:".
    static std::string DirName(const std::string& path, char separator);
    static std::wstring DirName(const std::wstring& path, wchar_t separator);
    /// Returns the last element, separators at the end being ignored; the empty text for a path
    /// of separators only.
    static std::string BaseName(const std::string& path, char separator);
    /// Returns the text after the last backslash; empty after one at the end, and also when
    /// there is none, so "a.txt" gives "" (BaseName() gives "a.txt").
    static std::string FileName(const std::string& path);
    static std::wstring FileName(const std::wstring& path);
    /// Changes the path in place and returns it: "name\.." goes, and "." unless it is the first
    /// element; separators in a row become one, slashes backslashes, and one at the end goes but
    /// for a root's. A ".." with nothing before it to take away stays; links are not looked at.
    /// Drives ("C:"), shares ("\\server") and "\\?\C:" are kept as roots. The wide form
    /// replaces invalid UTF-16 by U+FFFD.
    static std::string& Normalise(std::string& path);
    static std::wstring& Normalise(std::wstring& path);
    /// Returns a copy with every slash as a backslash, on every system.
    static std::string HomogeniseSlashesForOs(const std::string& path);
    static std::wstring HomogeniseSlashesForOs(const std::wstring& path);
    /// Returns the path as a library that knows nothing of this one takes it, in UTF-8: on Linux
    /// "/etc/hosts" for "C:\etc\hosts" in every spelling of it, and a path below /nonexistent for
    /// what is not on "C:"; on Windows the path itself.
    static std::string ToSystemPath(const std::string& path);
    /// Returns a copy in which every byte that is no ASCII letter or digit is '_', so one
    /// character beyond ASCII becomes several; the text ends at its first NUL.
    static std::string SanitizeTextForFilename(const std::string& text);

    /// Returns the directory of the running program's executable, without a separator at the
    /// end unless it is a drive's root; "." when the system does not tell it.
    static std::string GetExecutableDirectory();
    /// Returns `name` joined to that directory; whether it exists is not checked.
    static std::string BuildFilenameRelativeToExecutableDirectory(const std::string& name);
    /// Returns the directory "Extensibility", or "SSLCerts", beside the executable. The answer
    /// is kept for the process's life; the directories are not made.
    static std::string GetLibraryLocation();
    static std::string GetSSLCertsDirectory();
    /// Returns `name` below "Quillon\Client" in the common application-data directory, or in
    /// the temporary directory when there is none; as a last resort beside the executable. No
    /// directory is made.
    static std::string BuildFilenameRelativeToStaticDataDirectory(const std::string& name);
    /// Returns the same path as the operation for static data.
    static std::string BuildFilenameRelativeToDynamicDataDirectory(const std::string& name);
};

}  // namespace quillon
