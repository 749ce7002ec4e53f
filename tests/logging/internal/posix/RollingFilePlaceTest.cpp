#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "logging/internal/RollingLog.h"
#include "quillon/DestructorFunctor.h"
#include "support/LogLines.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

/// What only Linux can be brought to do: modes, owners, devices, pipes and a small file system.
using RollingFilePlaceTest = TempDirTest;

std::string Filled(std::size_t size) { return std::string(size, 'x'); }

}  // namespace

TEST_F(RollingFilePlaceTest, KeepsTheFileFromOthersAndChildren) {
    const ::mode_t before = ::umask(0);
    const RollingLog log(dir.Path("a/b/log"));
    ::umask(before);
    using fs::perms;
    EXPECT_EQ(fs::status(dir.Native("a/b/log")).permissions(),
              perms::owner_read | perms::owner_write | perms::group_read);
    for (const char* folder : {"a", "a/b"})
        EXPECT_EQ(fs::status(dir.Native(folder)).permissions(),
                  perms::owner_all | perms::group_read | perms::group_exec);
    EXPECT_NE(std::system("ls -l /proc/self/fd | grep -q quillon-test"), 0) << "a child has the log open";
}

TEST_F(RollingFilePlaceTest, FollowsNoLinkOfAnotherUser) {
    dir.Write("secret", "kept");
    fs::create_symlink(dir.Native("secret"), dir.Native("log"));
    RollingLog(dir.Path("log")).Write("ours");
    EXPECT_EQ(dir.Read("secret"), "kept" + Line("") + Line("ours"));
    constexpr ::uid_t kNobody = 65'534;
    if (::lchown(dir.Native("log").c_str(), kNobody, kNobody) != 0)
        GTEST_SKIP() << "only root gives links away";
    RollingLog log(dir.Path("log"));
    log.Write("theirs");
    EXPECT_EQ(dir.Read("secret"), "kept" + Line("") + Line("ours"));
    EXPECT_THAT(log.complaints, testing::ElementsAre(testing::HasSubstr(": (5/")));
}

TEST_F(RollingFilePlaceTest, WritesAgainOnceTheDeviceTakesData) {
    fs::create_symlink("/dev/full", dir.Native("log"));
    RollingLog log(dir.Path("log"));
    log.Write("lost");
    log.Write("lost too");
    fs::remove(dir.Native("log"));
    log.Write("kept");
    EXPECT_EQ(dir.Read("log"), Line("2 entries were lost") + Line("kept"));
    EXPECT_THAT(log.complaints, testing::ElementsAre(testing::StartsWith("Unable to write to file: ")));
}

TEST_F(RollingFilePlaceTest, NeitherWaitsForAPipeNorMovesADevice) {
    ASSERT_EQ(std::system(("mkfifo " + dir.Native("pipe").string()).c_str()), 0);
    RollingLog(dir.Path("pipe")).Write("lost");

    fs::create_symlink("/dev/null", dir.Native("device"));
    RollingLog log(dir.Path("device"));
    for (int megabyte = 0; megabyte < 7; ++megabyte) log.Write(std::string(1'000'000, 'x'));
    EXPECT_TRUE(fs::is_symlink(dir.Native("device")));
    EXPECT_FALSE(fs::exists(dir.Native("device.1")));
}

TEST_F(RollingFilePlaceTest, FullDiskTearsNoLaterLine) {
    const std::string mountPoint = dir.Native().string();
    if (std::system(("mount -t tmpfs -o size=1m none " + mountPoint + " 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "needs the right to mount a small file system";
    }
    const DestructorFunctor unmount(
        [&mountPoint] { EXPECT_EQ(std::system(("umount " + mountPoint).c_str()), 0); });
    dir.Write("ballast", Filled(1'000'000));
    RollingLog log(dir.Path("log"));
    const std::string filler(100, 'y');
    for (int n = 0; n < 1'000; ++n) log.Write(filler);
    EXPECT_LT(fs::file_size(dir.Native("log")), 100'000u) << "the disk did not get full";
    fs::remove(dir.Native("ballast"));
    log.Write("room again");
    log.Write("and more");

    auto lines = LinesOf(dir.Read("log"));
    ASSERT_GT(lines.size(), 4u);
    EXPECT_THAT(std::vector(lines.end() - 2, lines.end()), testing::ElementsAre("room again", "and more"));
    EXPECT_LT(lines[lines.size() - 4].size(), 100u) << "no line was torn: the test is too weak";
    const std::string note = lines[lines.size() - 3];
    lines.resize(lines.size() - 4);
    EXPECT_THAT(lines, testing::Each(filler));
    EXPECT_EQ(note, std::to_string(1'000 - lines.size()) + " entries were lost");
}

}  // namespace quillon::test
