#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/Variant.h"

namespace quillon {

/// Reads and writes one text file and remembers its encoding.
///
/// It holds a path (UTF-8) and an encoding, no handle: each operation opens and closes the file
/// itself. It is a plain value; one object is used by one thread at a time. What
/// FileSystemUtils says of the encodings and of the last error holds here too. Invalid UTF-8 that is to be
/// written as UTF-16 throws std::range_error.
///
/// @code
/// File file = File::Open("C:\\data\\list.txt");
/// for (const std::string& line : file.ReadByLine()) std::cout << line << '\n';
/// if (!file.Append("one more\r\n")) std::cout << "cannot append" << '\n';
/// File::Create("C:\\data\\copy.txt").Write(file.Read(), FileSystemUtils::UTF16LE);
/// @endcode
class QUILLON_API File {
public:
    using FileEncoding = FileSystemUtils::FileEncoding;

    /// Makes a File of unknown encoding. Neither touches the disk, and both do the same: the
    /// names say what the caller is about to do.
    static File Create(const std::string& path);
    static File Open(const std::string& path);

    /// Returns the content as UTF-8 without a mark; the encoding is detected anew and stored. A
    /// file that cannot be opened gives the empty text and leaves the stored encoding.
    std::string Read();
    /// Sets `value` to Read() without white space at its end, as a text; its name stays.
    void ReadToVariant(Variant& value);
    /// Returns the pieces of Read() between CR LF; a lone LF ends no line. A CR LF at the end
    /// gives a last, empty line, and an empty or missing file gives one empty line.
    std::vector<std::string> ReadByLine();
    /// Writes the file anew in `encoding`, else in the stored one, which stays. With neither,
    /// returns false (87, ERROR_INVALID_PARAMETER) and writes the Error entry "No file encoding
    /// supplied to File::Write()".
    bool Write(const std::string& text, FileEncoding encoding = FileSystemUtils::NOTSET);
    /// Appends in `encoding`, else in the stored one, else in the detected one, which is then
    /// stored. A missing or empty file of unknown encoding becomes UTF8NOBOM. Returns false
    /// when it cannot be written.
    bool Append(const std::string& text, FileEncoding encoding = FileSystemUtils::NOTSET);
    /// Deletes the file; a failure is not logged and leaves the system's last error.
    bool Delete();
    /// Returns whether anything of that name exists, a directory included.
    bool Exists() const;
    /// Returns the size in bytes; 0 also for a file that is missing or open for writing
    /// elsewhere.
    std::uint64_t Size() const;
    /// Returns the stored encoding, else the detected one, which is not stored; NOTSET for a
    /// file that is missing or cannot be opened.
    FileEncoding GetEncoding() const;
    /// Stores an encoding for Write() and Append(), and logs the old and the new one at Debug
    /// unless both are NOTSET. The file on disk does not change.
    void SetEncoding(FileEncoding encoding);

private:
    explicit File(const std::string& path);

    std::string m_path;
    FileEncoding m_encoding = FileSystemUtils::NOTSET;
};

}  // namespace quillon
