#include "quillon/TemporaryFile.h"

#include <utility>

#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

/// For destructors: without the memory for it what is there stays, and so it does when the host's logger
/// throws.
template <class Erase>
void TryToErase(const std::string& path, const Erase& erase) noexcept try {
    if (!path.empty()) erase(path);
} catch (...) {
}

}  // namespace

TemporaryFile::TemporaryFile() : m_path(FileSystemUtils::GetTemporaryFile()) {}

TemporaryFile::~TemporaryFile() {
    TryToErase(m_path, [](const std::string& path) { FileSystemUtils::EraseFile(path, true); });
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
    TryToErase(m_path, [](const std::string& path) { FileSystemUtils::EraseDirectory(path); });
}

TemporaryDirectory::TemporaryDirectory(TemporaryDirectory&& other) noexcept : m_path(other.Release()) {}

TemporaryDirectory& TemporaryDirectory::operator=(TemporaryDirectory&& other) noexcept {
    std::swap(m_path, other.m_path);
    return *this;
}

std::string TemporaryDirectory::Release() { return std::exchange(m_path, {}); }

}  // namespace quillon
