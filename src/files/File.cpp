#include "quillon/File.h"

#include <utility>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "quillon/ICLogger.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

File::File(const std::string& path) : m_path(path) {}

File File::Create(const std::string& path) { return File(path); }

File File::Open(const std::string& path) { return File(path); }

std::string File::Read() { return FileSystemUtils::ReadFile(m_path, m_encoding, FileSystemUtils::NOTSET); }

void File::ReadToVariant(Variant& value) {
    std::string text = Read();
    StringUtils::RightTrim(text);
    value.SetStringValue(std::move(text));
}

std::vector<std::string> File::ReadByLine() {
    std::vector<std::string> lines;
    StringUtils::SplitByString(Read(), "\r\n", lines, false);
    return lines;
}

bool File::Write(const std::string& text, FileEncoding encoding) {
    const FileEncoding effective = encoding != FileSystemUtils::NOTSET ? encoding : m_encoding;
    if (effective != FileSystemUtils::NOTSET) return FileSystemUtils::WriteFile(m_path, text, effective);

    if (ICLogger* logger = detail::RegisteredLogger()) {
        logger->Error("No file encoding supplied to File::Write()");
    }
    platform::SetLastErrorCode(base::kInvalidParameter);
    return false;
}

bool File::Append(const std::string& text, FileEncoding encoding) {
    if (m_encoding == FileSystemUtils::NOTSET && Size() == 0) m_encoding = FileSystemUtils::UTF8NOBOM;
    return FileSystemUtils::AppendToFile(m_path, text, m_encoding, encoding);
}

bool File::Delete() { return FileSystemUtils::EraseFile(m_path, true); }

bool File::Exists() const { return FileSystemUtils::Exists(m_path); }

std::uint64_t File::Size() const { return FileSystemUtils::GetFileSizeInBytes(m_path); }

File::FileEncoding File::GetEncoding() const {
    if (m_encoding != FileSystemUtils::NOTSET || !Exists()) return m_encoding;
    std::string path = m_path;
    return FileSystemUtils::GetFileEncoding(path);
}

void File::SetEncoding(FileEncoding encoding) {
    ICLogger* logger = nullptr;
    if (m_encoding != FileSystemUtils::NOTSET || encoding != FileSystemUtils::NOTSET) {
        logger = detail::RegisteredLogger();
    }
    if (logger != nullptr) {
        logger->Debug("The encoding of a file has been modified from %s to %s",
                      FileSystemUtils::FileEncodingToString(m_encoding),
                      FileSystemUtils::FileEncodingToString(encoding));
    }
    m_encoding = encoding;
}

}  // namespace quillon
