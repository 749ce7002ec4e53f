#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quillon/DestructorFunctor.h"
#include "support/TempDir.h"
#include "system/ContentFiles.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using Clock = std::chrono::steady_clock;

std::string Put(agent::DestinationFolder& folder, const std::vector<std::string>& components) {
    std::unique_ptr<agent::NewFile> file;
    std::string fault = folder.Create(components, file);
    if (fault.empty()) fault = file->Write("new", 3);
    return fault.empty() ? file->Commit() : fault;
}

/// Five seconds for all attacks of this kind, or the number that the environment gives; this is a fifth.
Clock::time_point EndOfAttack() {
    const char* const chosen = std::getenv("QUILLON_TORTURE_SECONDS");
    const double seconds = chosen != nullptr ? std::clamp(std::strtod(chosen, nullptr), 0.5, 3600.0) : 5;
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(seconds / 5 / QUILLON_TEST_SLOWDOWN));
}

std::string Content(const fs::path& file) {
    std::string content;
    std::ifstream(file) >> content;
    return content;
}

}  // namespace

// Only Linux swaps a directory and a link in one step.
TEST_F(TempDirTest, SwappedFoldersLeadNoDownloadOutside) {
    constexpr int kMostTries = 10'000'000;
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
    std::atomic<bool> isOver{false};
    std::atomic<int> swaps{0};
    std::thread attacker([&] {
        const std::string link = place / "link", sub = place / "to/sub", victim = place / "outside/a",
                          planted = place / "to/sub/planted", target = place / "to/sub/a";
        while (!isOver && swaps < kMostTries) {
            if (swaps % 2 == 0 && ::symlink(victim.c_str(), planted.c_str()) == 0)
                ::rename(planted.c_str(), target.c_str());
            for (int i = 0; i < 2; ++i)
                swaps += ::renameat2(AT_FDCWD, sub.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0;
        }
    });
    const auto isTouched = [&place] {
        return Content(place / "outside/a") != "precious" ||
               Content(place / "outside/below/a") != "precious" ||
               std::distance(fs::recursive_directory_iterator(place / "outside"), {}) != 3;
    };
    // On a busy machine the attacker may begin late.
    const auto latest = Clock::now() + std::chrono::seconds(60);
    while (swaps == 0 && Clock::now() < latest) std::this_thread::yield();
    const auto end = EndOfAttack();
    int tries = 0, written = 0;
    for (; tries < kMostTries && Clock::now() < end; ++tries) {
        const bool isBelow = tries % 2 == 0;
        written += Put(folder, isBelow ? std::vector<std::string>{"sub", "below", "a"}
                                       : std::vector<std::string>{"sub", "a"})
                       .empty();
        if (tries % 64 == 0 && isTouched()) break;
    }
    isOver = true;
    attacker.join();
    EXPECT_FALSE(isTouched()) << "after " << tries << " tries";
    EXPECT_GT(swaps, 0);
    std::cout << "download: " << tries << " tries, " << written << " written, " << swaps << " swaps\n";
}

}  // namespace quillon::test
