#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "quillon/DestructorFunctor.h"
#include "support/TempDir.h"
#include "support/posix/RunAttack.h"
#include "system/ContentFiles.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

std::string Put(agent::DestinationFolder& folder, const std::vector<std::string>& components) {
    std::unique_ptr<agent::NewFile> file;
    std::string fault = folder.Create(components, file);
    if (fault.empty()) fault = file->Write("new", 3);
    return fault.empty() ? file->Commit() : fault;
}

std::string Content(const fs::path& file) {
    std::string content;
    std::ifstream(file) >> content;
    return content;
}

}  // namespace

// Only Linux swaps a directory and a link in one step.
TEST_F(TempDirTest, SwappedFoldersLeadNoDownloadOutside) {
    // In memory, where there is such a place, because nothing waits for the disk there.
    const fs::path memory = "/dev/shm";
    const fs::path place = fs::is_directory(memory) ? memory / dir.Native().filename() : dir.Native();
    const DestructorFunctor remove([&place] { fs::remove_all(place); });
    fs::create_directories(place / "outside/below");
    fs::create_directories(place / "to/sub/below");
    std::ofstream(place / "outside/a") << "precious";
    std::ofstream(place / "outside/below/a") << "precious";
    fs::create_directory_symlink(place / "outside", place / "link");

    agent::DestinationFolder folder;
    ASSERT_EQ(folder.Open(ToLibraryPath(place / "to")), "");
    const std::string link = place / "link", sub = place / "to/sub", victim = place / "outside/a",
                      planted = place / "to/sub/planted", target = place / "to/sub/a";
    int swaps = 0;
    const auto attack = [&] {
        if (swaps % 2 == 0 && ::symlink(victim.c_str(), planted.c_str()) == 0)
            ::rename(planted.c_str(), target.c_str());
        const int before = swaps;
        for (int i = 0; i < 2; ++i)
            swaps += ::renameat2(AT_FDCWD, sub.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0;
        return swaps - before;
    };
    bool isBelow = false;
    const auto work = [&] {
        isBelow = !isBelow;
        static_cast<void>(Put(folder, isBelow ? std::vector<std::string>{"sub", "below", "a"}
                                              : std::vector<std::string>{"sub", "a"}));
    };
    RunAttack("download", attack, work, [&place] {
        return Content(place / "outside/a") != "precious" ||
               Content(place / "outside/below/a") != "precious" ||
               std::distance(fs::recursive_directory_iterator(place / "outside"), {}) != 3;
    });
}

}  // namespace quillon::test
