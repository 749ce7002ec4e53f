#include "quillon/LsZFile.h"

#include <new>

#include "base/ErrorCodes.h"
#include "files/LsZParser.h"
#include "platform/ErrorText.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LogText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

LsZFile::LsZFile(const std::string& path, const std::string* displayName)
    : m_logger(detail::RegisteredLogger()), m_record(std::make_unique<Record>()) {
    m_record->path = path;
    if (displayName != nullptr) m_record->displayName = *displayName;
    try {
        m_parsedOk = Parser(*this).Parse();
    } catch (const std::bad_alloc&) {
        if (m_logger != nullptr) {
            m_logger->Error("Cannot open LSZ file '%s' because: %s", LogText::OneLine(path).c_str(),
                            "it needs too much memory");
        }
        platform::SetLastErrorCode(base::kNotEnoughMemory);
    }
}

LsZFile::~LsZFile() = default;

bool LsZFile::ParsedOk() const { return m_parsedOk; }
std::vector<LsZFile::FileFromLsZ>& LsZFile::GetFiles() const { return m_record->files; }
std::string LsZFile::GetOverallHash() { return m_record->overallHash; }
std::uint16_t LsZFile::GetVersion() const { return m_version; }
std::string LsZFile::GetVersionStr() { return std::to_string(m_version); }
std::uint32_t LsZFile::GetBlockSize() const { return m_blockSize; }
std::uint64_t LsZFile::GetFileSize() const { return FileSystemUtils::GetFileSizeInBytes(m_record->path); }

}  // namespace quillon
