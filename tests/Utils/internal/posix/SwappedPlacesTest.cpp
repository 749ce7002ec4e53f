#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"
#include "support/TempDir.h"
#include "support/posix/RunAttack.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;

/// Has temporary directories made in memory, where nothing waits for the disk.
class InMemory {
public:
    InMemory() {
        if (fs::is_directory(kMemory)) ::setenv("TMPDIR", kMemory, 1);
    }
    ~InMemory() { Restore(); }
    InMemory(const InMemory&) = delete;
    InMemory& operator=(const InMemory&) = delete;

    void Restore() const {
        m_before.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", m_before.c_str(), 1);
    }

private:
    static constexpr const char* kMemory = "/dev/shm";
    const std::string m_before = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "";
};

/// Another process that swaps what the library works on for links to what it must not touch.
class SwappedPlaces : public testing::Test {
protected:
    void SetUp() override {
        m_inMemory.Restore();
        dir.Write("outside/victim", "precious");
        dir.Write("outside/below/deep/victim", "precious");
        fs::permissions(dir.Native("outside/victim"), static_cast<fs::perms>(0640));
        fs::create_directory(dir.Native("in"));
        m_before = Outside();
    }

    std::string At(const std::string& name) const { return dir.Native(name).string(); }

    /// Repeats `attack` on a thread of its own, and `work` on this one, for a while.
    void Run(const char* what, const std::function<void()>& attack, const std::function<void()>& work) {
        test::RunAttack(
            what, [&] { return attack(), 1; }, work, [this] { return Outside() != m_before; });
    }

    /// Swaps two names at once.
    void Exchange(const std::string& a, const std::string& b) const {
        ::renameat2(AT_FDCWD, At(a).c_str(), AT_FDCWD, At(b).c_str(), RENAME_EXCHANGE);
    }

    /// Puts a link to the victim in the place of a name.
    void Plant(const fs::path& name) const {
        const std::string planted = name.string() + "-planted";
        if (::symlink(At("outside/victim").c_str(), planted.c_str()) == 0)
            ::rename(planted.c_str(), name.c_str());
    }

private:
    const InMemory m_inMemory;

protected:
    const test::TempDir dir;

private:
    /// All that is there, with mode, owner and content.
    std::map<std::string, std::string> Outside() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(dir.Native("outside"))) {
            const std::string name = fs::relative(entry.path(), dir.Native()).string();
            struct ::stat facts {};
            ::lstat(entry.path().c_str(), &facts);
            all[name] = std::to_string(facts.st_mode) + ' ' + std::to_string(facts.st_uid) + ' ' +
                        std::to_string(facts.st_mtim.tv_nsec) + ' ' +
                        (entry.is_regular_file() ? dir.Read(name) : "");
        }
        return all;
    }

    std::map<std::string, std::string> m_before;
};

TEST_F(SwappedPlaces, EraseNeverLeavesItsTree) {
    Run(
        "EraseDirectory",
        [&] {
            // The link takes the place of a directory, which takes the link's; then back again.
            for (const auto& [link, place, target] :
                 {std::array{"link", "in/tree/below", "outside"},
                  std::array{"link2", "in/tree/below/deep", "outside/below"}}) {
                std::error_code ignored;
                if (fs::is_directory(fs::symlink_status(dir.Native(link), ignored)))
                    fs::remove_all(dir.Native(link), ignored);
                fs::create_directory_symlink(dir.Native(target), dir.Native(link), ignored);
                Exchange(place, link);
                std::this_thread::yield();
                Exchange(place, link);
            }
        },
        [&] {
            std::error_code ignored;
            if (!dir.Exists("in/tree")) {
                dir.Write("in/fresh/below/deep/victim", "own");
                dir.Write("in/fresh/below/file", "own");
                fs::rename(dir.Native("in/fresh"), dir.Native("in/tree"), ignored);
            }
            FS::EraseDirectory(dir.Path("in\\tree"));
        });
    // Now that nobody swaps anything.
    EXPECT_TRUE(!dir.Exists("in/tree") || FS::EraseDirectory(dir.Path("in\\tree")));
}

TEST_F(SwappedPlaces, CopyAndAtomicWriteReplaceALinkAndFollowNone) {
    const std::string source = dir.Write("source", std::string(10'000, 's'));
    const std::string target = dir.Path("in\\target");
    int number = 0;
    Run(
        "DuplicateFile, FileCopy, WriteFileAtomic, SecureFile", [&] { Plant(dir.Native("in/target")); },
        [&] {
            switch (++number % 4) {
                case 0:
                    EXPECT_TRUE(FS::DuplicateFile(source, target));
                    break;
                case 1:
                    FS::FileCopy(source, target);
                    break;
                case 2:
                    EXPECT_TRUE(FS::WriteFileAtomic(target, "content"));
                    break;
                default:
                    static_cast<void>(FS::SecureFile(target));  // it may be gone
                    break;
            }
        });
}

TEST_F(SwappedPlaces, MoveTakesNothingOfOthersAlong) {
    const test::TempDir elsewhere;  // on another volume, where there is one
    const fs::path source = elsewhere.Native("source"), target = dir.Native("in/target");
    Run(
        "RenameFile",
        [&] {
            Plant(source);
            Plant(target);
        },
        [&] {
            elsewhere.Write("own", "moved");
            fs::rename(elsewhere.Native("own"), source);
            if (!FS::RenameFile(elsewhere.Path("source"), dir.Path("in\\target"), true)) return;
            // What was moved is our file or a link; never what the link leads to.
            struct ::stat facts {};
            const bool isFile = ::lstat(target.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
            EXPECT_TRUE(!isFile || facts.st_size == 5);
        });
    fs::remove(source);  // now that nobody swaps it
    elsewhere.Write("source", "moved");
    EXPECT_TRUE(FS::RenameFile(elsewhere.Path("source"), dir.Path("in\\target"), true));
    EXPECT_EQ(dir.Read("in/target"), "moved");
}

TEST_F(SwappedPlaces, MoveErasesNothingButWhatItHasMoved) {
    const test::TempDir elsewhere;
    const std::string source = elsewhere.Native("source"), theirs = elsewhere.Native("theirs");
    Run(
        "RenameFile, files exchanged",
        [&] { ::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, theirs.c_str(), RENAME_EXCHANGE); },
        [&] {
            elsewhere.Write("source", "one");
            elsewhere.Write("theirs", "two");
            const bool isMoved = FS::RenameFile(elsewhere.Path("source"), dir.Path("in\\target"), false);
            // With one name gone nothing is exchanged any more.
            const std::string left = elsewhere.Read(fs::exists(source) ? "source" : "theirs");
            EXPECT_EQ(dir.Exists("in/target"), isMoved);
            EXPECT_TRUE(isMoved ? left != dir.Read("in/target") : fs::exists(source) && fs::exists(theirs));
            fs::remove(dir.Native("in/target"));
            fs::remove(source);
            fs::remove(theirs);
        });
}

TEST_F(SwappedPlaces, TemporaryNamesAreNeverThoseOfOthers) {
    const std::string folder = dir.Path("in");
    const auto take = [this](unsigned number) {
        char name[32];
        std::snprintf(name, sizeof name, "in/vnt%04X.tmp", number % 0x10000);
        if (number % 3 == 0) {
            ::symlink(At("outside/below").c_str(), At(name).c_str());
        } else {
            ::mkdir(At(name).c_str(), 0777);
        }
    };
    for (unsigned number = 0; number < 0x10000; number += 64) take(number);
    constexpr unsigned kStep = 7, kMost = 20'000;  // most names stay free
    unsigned next = 0;
    Run(
        "CreateTemporaryFile, CreateTemporaryDirectory",
        [&] {
            if (next < kStep * kMost) take(next += kStep);
        },
        [&] {
            const auto directory = platform::CreateTemporaryDirectory(folder, "vnt");
            const auto file = platform::CreateTemporaryFile(folder, "vnt");
            ASSERT_TRUE(directory && file);
            struct ::stat facts {};
            ASSERT_EQ(::lstat(test::ToNative(*directory).c_str(), &facts), 0);
            EXPECT_TRUE(S_ISDIR(facts.st_mode) && (facts.st_mode & 0777U) == 0700U) << *directory;
            ASSERT_EQ(::lstat(test::ToNative(*file).c_str(), &facts), 0);
            EXPECT_TRUE(S_ISREG(facts.st_mode) && (facts.st_mode & 0777U) == 0600U) << *file;
            EXPECT_TRUE(FS::EraseFile(*file, false));
            EXPECT_TRUE(FS::EraseDirectory(*directory));
        });
}

}  // namespace
}  // namespace quillon
