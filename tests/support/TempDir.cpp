#include "support/TempDir.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

constexpr bool kNativeDrives = fs::path::preferred_separator == '\\';

fs::path Utf8Path(const std::string& text) { return fs::path(std::u8string(text.begin(), text.end())); }

}  // namespace

fs::path ToNative(const std::string& libraryPath) {
    if (kNativeDrives) return Utf8Path(libraryPath);
    std::string text = libraryPath.starts_with("C:") ? libraryPath.substr(2) : libraryPath;
    std::replace(text.begin(), text.end(), '\\', '/');
    return Utf8Path(text);
}

std::string ToLibraryPath(const fs::path& native) {
    const std::u8string utf8 = native.u8string();
    std::string text(utf8.begin(), utf8.end());
    if (!kNativeDrives && text.starts_with('/')) text.insert(0, "C:");
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

TempDir::TempDir() {
    static std::atomic<unsigned> count{0};
    static const unsigned seed = std::random_device{}();
    m_path =
        fs::temp_directory_path() / ("quillon-test-" + std::to_string(seed) + "-" + std::to_string(++count));
    fs::create_directories(m_path);
}

TempDir::~TempDir() {
    std::error_code failed, ignored;
    fs::remove_all(m_path, failed);
    if (!failed) return;
    constexpr auto kHow = fs::perm_options::add | fs::perm_options::nofollow;
    fs::permissions(m_path, fs::perms::owner_all, kHow, ignored);
    for (auto entry = fs::recursive_directory_iterator(m_path, ignored);
         entry != fs::recursive_directory_iterator(); entry.increment(ignored))
        fs::permissions(entry->path(), fs::perms::owner_all, kHow, ignored);
    fs::remove_all(m_path, ignored);
}

std::string TempDir::Path(const std::string& name) const { return ToLibraryPath(Native(name)); }

fs::path TempDir::Native(const std::string& name) const {
    return name.empty() ? m_path : m_path / Utf8Path(name);
}

std::string TempDir::Write(const std::string& name, std::string_view content) const {
    fs::create_directories(Native(name).parent_path());
    std::ofstream(Native(name), std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
    return Path(name);
}

std::string TempDir::Read(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool TempDir::Exists(const std::string& name) const { return fs::exists(fs::symlink_status(Native(name))); }

void TempDir::SetReadOnly(const std::string& name, bool isReadOnly) const {
    const auto write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(Native(name), write, isReadOnly ? fs::perm_options::remove : fs::perm_options::add);
}

}  // namespace quillon::test
