#pragma once

#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Owns a new, empty file in the temporary directory, which is deleted with the object. It is made as by
/// FileSystemUtils::GetTemporaryFile(): nobody else gets it, and only its owner may read it. One object
/// is for one thread at a time; a failed deletion is not reported.
///
/// @code
/// const TemporaryFile file;
/// if (file.Path().empty()) return false;
/// FileSystemUtils::WriteUtf8File(file.Path(), "text");
/// @endcode
class QUILLON_API TemporaryFile {
public:
    /// Makes the file. When that fails, the path is empty and the last error says why.
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&& other) noexcept;

    /// Returns the path in UTF-8.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    /// Gives the file to the caller, who deletes it; the object keeps none.
    std::string Release();

private:
    std::string m_path;
};

/// Owns a new, empty directory in the temporary directory, which is deleted with all that is in it. Only its
/// owner may use it. Links in it are removed and never followed; what cannot be deleted is logged as by
/// FileSystemUtils::EraseDirectory(). One object is for one thread at a time.
class QUILLON_API TemporaryDirectory {
public:
    /// Makes the directory. When that fails, the path is empty and the last error says why.
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(TemporaryDirectory&& other) noexcept;
    TemporaryDirectory& operator=(TemporaryDirectory&& other) noexcept;

    /// Returns the path in UTF-8, without a trailing separator.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    /// Gives the directory to the caller, who deletes it; the object keeps none.
    std::string Release();

private:
    std::string m_path;
};

}  // namespace quillon
