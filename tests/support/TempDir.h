#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace quillon::test {

/// A new folder, removed with all that is in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// Library path (UTF-8, backslashes) of the folder, or of `name` in it.
    std::string Path(const std::string& name = {}) const;
    /// The same for the C++ library.
    std::filesystem::path Native(const std::string& name = {}) const;
    /// Makes or replaces a file, with its folders; returns its library path.
    std::string Write(const std::string& name, std::string_view content) const;
    std::string Read(const std::string& name) const;
    bool Exists(const std::string& name) const;
    void SetReadOnly(const std::string& name, bool isReadOnly) const;

private:
    std::filesystem::path m_path;
};

/// For tests that begin with an empty folder.
class TempDirTest : public testing::Test {
protected:
    const TempDir dir;
};

/// What the C++ library calls a library path, and back.
std::filesystem::path ToNative(const std::string& libraryPath);
std::string ToLibraryPath(const std::filesystem::path& native);

}  // namespace quillon::test
