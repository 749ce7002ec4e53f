#include <benchmark/benchmark.h>
#include <ftw.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "quillon/FileSystemUtils.h"

namespace fs = std::filesystem;

namespace {

constexpr int kFolders = 500;
constexpr int kFilesPerFolder = 40;
constexpr std::uint64_t kBytesPerFile = 3;

/// 20,000 small files in 500 folders, two levels deep.
class Tree {
public:
    static const Tree& Get() {
        static const Tree tree;
        return tree;
    }

    ~Tree() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    const fs::path& Path() const { return m_path; }
    /// Absolute paths with slashes are library paths on Linux too.
    std::string LibraryPath() const { return m_path.string(); }

private:
    Tree() : m_path(fs::temp_directory_path() / ("quillon-benchmark-" + std::to_string(std::rand()))) {
        for (int folder = 0; folder < kFolders; ++folder) {
            const fs::path path = m_path / std::to_string(folder / 25) / std::to_string(folder);
            fs::create_directories(path);
            for (int file = 0; file < kFilesPerFolder; ++file) {
                std::ofstream(path / ("file-" + std::to_string(file) + ".txt")) << "abc";
            }
        }
    }

    fs::path m_path;
};

void Check(benchmark::State& state, std::uint64_t bytes) {
    if (bytes != kFolders * kFilesPerFolder * kBytesPerFile) state.SkipWithError("a wrong sum");
}

void SumWithStandardLibrary(benchmark::State& state) {
    const Tree& tree = Tree::Get();
    for (auto _ : state) {
        std::uint64_t bytes = 0;
        for (const auto& entry : fs::recursive_directory_iterator(tree.Path())) {
            if (entry.is_regular_file()) bytes += entry.file_size();
        }
        Check(state, bytes);
    }
}
BENCHMARK(SumWithStandardLibrary)->Name("tree-size/baseline")->Unit(benchmark::kMillisecond);

void SumWithQuillon(benchmark::State& state) {
    const std::string path = Tree::Get().LibraryPath();
    for (auto _ : state) Check(state, quillon::FileSystemUtils::GetDirectorySizeInBytes(path, true));
}
BENCHMARK(SumWithQuillon)->Name("tree-size/quillon")->Unit(benchmark::kMillisecond);

std::uint64_t g_bytes = 0;  // nftw() passes nothing on

int AddSize(const char*, const struct stat* status, int kind, FTW*) {
    if (kind == FTW_F) g_bytes += static_cast<std::uint64_t>(status->st_size);
    return 0;
}

void WalkWithNftw(benchmark::State& state) {
    const std::string path = Tree::Get().LibraryPath();
    for (auto _ : state) {
        g_bytes = 0;
        constexpr int kDescriptors = 16;
        ::nftw(path.c_str(), AddSize, kDescriptors, FTW_PHYS);
        Check(state, g_bytes);
    }
}
BENCHMARK(WalkWithNftw)->Name("tree-walk/baseline")->Unit(benchmark::kMillisecond);

void WalkWithQuillon(benchmark::State& state) {
    using FS = quillon::FileSystemUtils;
    const std::string path = Tree::Get().LibraryPath();
    for (auto _ : state) {
        std::uint64_t bytes = 0;
        FS::WalkFiles(path, {}, [&bytes](const FS::WalkEntry& entry) {
            bytes += entry.size;
            return true;
        });
        Check(state, bytes);
    }
}
BENCHMARK(WalkWithQuillon)->Name("tree-walk/quillon")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
