#include "quillon/TemporaryFile.h"

#include <utility>

#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

TemporaryFile::TemporaryFile() : m_path(FileSystemUtils::GetTemporaryFile()) {}

TemporaryFile::~TemporaryFile() {
    if (!m_path.empty()) FileSystemUtils::EraseFile(m_path, true);
}

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept : m_path(other.Release()) {}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
    std::swap(m_path, other.m_path);
    return *this;
}

std::string TemporaryFile::Release() { return std::exchange(m_path, {}); }

TemporaryDirectory::TemporaryDirectory()
    : m_path(platform::CreateTemporaryDirectory(FileSystemUtils::GetSystemTempPath(), "vnt").value_or("")) {}

TemporaryDirectory::~TemporaryDirectory() {
    if (!m_path.empty()) FileSystemUtils::EraseDirectory(m_path);
}

TemporaryDirectory::TemporaryDirectory(TemporaryDirectory&& other) noexcept : m_path(other.Release()) {}

TemporaryDirectory& TemporaryDirectory::operator=(TemporaryDirectory&& other) noexcept {
    std::swap(m_path, other.m_path);
    return *this;
}

std::string TemporaryDirectory::Release() { return std::exchange(m_path, {}); }

}  // namespace quillon
