#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/Variant.h"

namespace quillon {

/// A path (UTF-8) and the encoding of the text file there. Touches the disk only
/// in its operations, each of which opens and closes the file itself.
class QUILLON_API File {
public:
    using FileEncoding = FileSystemUtils::FileEncoding;

    /// A File of unknown encoding; the disk is not touched.
    static File Create(const std::string& path);
    static File Open(const std::string& path);

    /// The content as UTF-8; the detected encoding is stored.
    std::string Read();
    /// Read() without trailing white space, as the text of `value`.
    void ReadToVariant(Variant& value);
    /// Lines end at CR LF only; a final one gives a last, empty line.
    std::vector<std::string> ReadByLine();
    /// `encoding`, else the stored one; with neither, an Error entry and false.
    bool Write(const std::string& text, FileEncoding encoding = FileSystemUtils::NOTSET);
    /// A missing or empty file of unknown encoding becomes UTF-8 without a mark.
    bool Append(const std::string& text, FileEncoding encoding = FileSystemUtils::NOTSET);
    bool Delete();
    bool Exists() const;
    std::uint64_t Size() const;
    /// The stored encoding, else the detected one (not stored), else NOTSET.
    FileEncoding GetEncoding() const;
    /// A change is logged at Debug.
    void SetEncoding(FileEncoding encoding);

private:
    explicit File(const std::string& path);

    std::string m_path;
    FileEncoding m_encoding = FileSystemUtils::NOTSET;
};

}  // namespace quillon
