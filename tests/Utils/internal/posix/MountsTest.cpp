#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/ErrorText.h"
#include "platform/Handle.h"
#include "quillon/FileSystemUtils.h"
#include "support/TempDir.h"
#include "support/posix/FailingCalls.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;

/// Small file systems in memory below a temporary directory, which only root can mount.
class Mounts : public test::TempDirTest {
protected:
    ~Mounts() override {
        for (const fs::path& place : m_mounted) ::umount2(place.c_str(), MNT_DETACH);
    }

    bool Mount(const std::string& name) {
        fs::create_directories(dir.Native(name));
        return Keep(name, ::mount("quillon-test", dir.Native(name).c_str(), "tmpfs", MS_NOSUID, "size=256k"));
    }

    bool Bind(const std::string& from, const std::string& name) {
        if (!dir.Exists(name)) fs::create_directories(dir.Native(name));
        return Keep(name,
                    ::mount(dir.Native(from).c_str(), dir.Native(name).c_str(), nullptr, MS_BIND, nullptr));
    }

private:
    bool Keep(const std::string& name, int result) {
        if (result == 0) m_mounted.push_back(dir.Native(name));
        return result == 0;
    }

    std::vector<fs::path> m_mounted;
};

TEST_F(Mounts, EraseDirectoryStopsAtAMount) {
    dir.Write("outside/precious", "x");
    if (!Mount("tree/memory") || !Bind("outside", "tree2/bound"))
        GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    dir.Write("tree/memory/precious", "x");
    for (const char* const tree : {"tree", "tree2"}) {
        EXPECT_FALSE(FS::EraseDirectory(dir.Path(tree))) << tree;
        EXPECT_EQ(platform::LastError(), 17U) << tree;
    }
    EXPECT_EQ(dir.Read("tree/memory/precious") + dir.Read("outside/precious"), "xx");
    // A tree within the mounted file system is like any other.
    dir.Write("tree/memory/sub/file", "x");
    EXPECT_TRUE(FS::EraseDirectory(dir.Path("tree\\memory\\sub")));
}

TEST_F(Mounts, FullDiskKeepsTheOldContent) {
    if (!Mount("disk")) GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    const std::string large(1'000'000, 'l');
    const std::string source = dir.Write("source", large);
    const std::string target = dir.Write("disk/target", "old");
    EXPECT_FALSE(FS::WriteFileAtomic(target, large));
    EXPECT_EQ(platform::LastError(), 112U);
    EXPECT_FALSE(FS::DuplicateFile(source, target));
    EXPECT_EQ(platform::LastError(), 112U);
    EXPECT_FALSE(FS::RenameFile(source, target, true));
    EXPECT_FALSE(FS::RenameFile(source, dir.Path("disk\\free"), false));
    EXPECT_EQ(dir.Read("disk/target"), "old");
    EXPECT_EQ(dir.Read("source"), large);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native("disk")), {}), 1);
}

TEST_F(Mounts, MoveThatCannotEndKeepsWhatItWasToReplace) {
    if (!Mount("disk") || !Mount("fixed")) GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    dir.Write("large", std::string(1'000'000, 'l'));
    fs::create_symlink("large", dir.Native("link"));
    dir.Write("disk/tree/inner", "inner");
    dir.Write("fixed/source", "new");
    dir.Write("target", "old");
    const std::string fixed = dir.Native("fixed").string();
    ASSERT_EQ(::mount(nullptr, fixed.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    const std::tuple<const char*, const char*, const char*, std::uint32_t> cases[] = {
        {"a directory, by a file that does not fit", "large", "disk\\tree", 112},
        {"a directory, by a link, which stays on its volume", "link", "disk\\tree", 17},
        {"a file, by one that cannot be removed", "fixed\\source", "target", 19},
        {"a directory, by one that cannot be removed", "fixed\\source", "disk\\tree", 19},
        {"a file system that is mounted, by a file", "large", "disk", 32},
    };
    for (const auto& [what, from, to, code] : cases) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(FS::RenameFile(dir.Path(from), dir.Path(to), true));
        EXPECT_EQ(platform::LastError(), code);
        EXPECT_TRUE(FS::Exists(dir.Path(from)));
        EXPECT_EQ(dir.Read("disk/tree/inner") + dir.Read("target"), "innerold");
        EXPECT_EQ(std::distance(fs::directory_iterator(dir.Native("disk")), {}), 1);
    }
}

TEST_F(Mounts, MoveOfAFileThatCannotBeRemovedReplacesNothing) {
    dir.Write("bound", "new");
    dir.Write("immutable", "new");
    if (!Mount("disk") || !Bind("bound", "bound"))
        GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    const std::string target = dir.Write("disk/target", "old");
    const platform::FileHandle file(::open(dir.Native("immutable").c_str(), O_RDONLY));
    int before = 0, flags = FS_IMMUTABLE_FL;
    const bool hasFlags = ::ioctl(file.Get(), FS_IOC_GETFLAGS, &before) == 0 &&
                          ::ioctl(file.Get(), FS_IOC_SETFLAGS, &flags) == 0;
    std::vector<const char*> names = {"bound"};
    if (hasFlags) names.push_back("immutable");
    for (const char* const name : names) {
        EXPECT_FALSE(FS::RenameFile(dir.Path(name), target, true)) << name;
        EXPECT_EQ(dir.Read(name) + dir.Read("disk/target"), "newold") << name;
    }
    ::ioctl(file.Get(), FS_IOC_SETFLAGS, &before);
}

TEST_F(Mounts, WhatIsWrittenWhileAFileIsMovedIsNotRemovedWithIt) {
    if (!Mount("disk")) GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    const std::string source = dir.Write("source", "first");
    const std::string target = dir.Write("disk/target", "old");
    test::ThisThreadsFileCalls().meanwhile = [this] { dir.Write("source", "first and second "); };
    EXPECT_FALSE(FS::RenameFile(source, target, true));
    EXPECT_EQ(platform::LastError(), 32U);
    EXPECT_EQ(dir.Read("source") + dir.Read("disk/target"), "first and second old");
}

TEST_F(Mounts, MoveToAnotherVolumeKeepsOwnerModeAndTime) {
    if (!Mount("disk")) GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    dir.Write("source", "content");
    dir.Write("disk/target", "old");
    const std::string native = dir.Native("source").string();
    ASSERT_EQ(::chown(native.c_str(), 1234, 4321), 0);
    ASSERT_EQ(::chmod(native.c_str(), 0640), 0);
    struct ::stat before {
    }, after{};
    ASSERT_EQ(::stat(native.c_str(), &before), 0);
    const bool hasAttributes = ::setxattr(native.c_str(), "user.origin", "web", 3, 0) == 0 &&
                               ::setxattr(dir.Native("disk").c_str(), "user.origin", "web", 3, 0) == 0;
    EXPECT_TRUE(FS::RenameFile(dir.Path("source"), dir.Path("disk\\target"), true));
    char origin[] = "none";
    EXPECT_EQ(::getxattr(dir.Native("disk/target").c_str(), "user.origin", origin, 3),
              hasAttributes ? 3 : -1);
    EXPECT_STREQ(origin, hasAttributes ? "webe" : "none");
    ASSERT_EQ(::stat(dir.Native("disk/target").c_str(), &after), 0);
    EXPECT_EQ(after.st_uid, 1234U);
    EXPECT_EQ(after.st_gid, 4321U);
    EXPECT_EQ(after.st_mode & 07777U, 0640U);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(dir.Read("disk/target"), "content");
    EXPECT_FALSE(dir.Exists("source"));
    fs::create_directories(dir.Native("folder/sub"));
    fs::create_directories(dir.Native("disk/folder/sub"));
    EXPECT_FALSE(FS::RenameFile(dir.Path("folder"), dir.Path("disk\\folder"), true));
    EXPECT_EQ(platform::LastError(), 17U);
    EXPECT_TRUE(dir.Exists("folder/sub") && dir.Exists("disk/folder/sub"));
}

TEST_F(Mounts, ReplacedFileKeepsItsOwner) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    const std::string target = dir.Write("target", "old");
    ASSERT_EQ(::chown(dir.Native("target").c_str(), 1234, 4321), 0);
    ASSERT_EQ(::chmod(dir.Native("target").c_str(), 0604), 0);
    EXPECT_TRUE(FS::WriteFileAtomic(target, "new"));
    struct ::stat facts {};
    ASSERT_EQ(::stat(dir.Native("target").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777U, 0604U);
    EXPECT_EQ(facts.st_uid, 1234U);
    EXPECT_TRUE(FS::DuplicateFile(dir.Write("source", "x"), target));
    ASSERT_EQ(::stat(dir.Native("target").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_gid, 4321U);
}

TEST_F(Mounts, ListOfTheDirectoryForNewFilesOpensNoReplacedAndNoMovedFile) {
    if (!Mount("disk")) GTEST_SKIP() << "nothing can be mounted: " << std::strerror(errno);
    const std::string target = dir.Write("target", "old"), copied = dir.Write("copied", "old");
    const std::string moved = dir.Write("disk/moved", "x");
    for (const char* const name : {"target", "copied", "disk/moved"})
        ASSERT_EQ(::chmod(dir.Native(name).c_str(), 0640), 0);
    // One named user (65534: read and write).
    const unsigned char list[] = {2, 0,   0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  6,
                                  0, 254, 255, 0,   0,   4,   0,  4, 0,   255, 255, 255, 255, 16, 0,
                                  6, 0,   255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
    if (::setxattr(dir.Native().c_str(), "system.posix_acl_default", list, sizeof list, 0) != 0)
        GTEST_SKIP() << "the temporary directory's file system has no access lists";
    EXPECT_TRUE(FS::WriteFileAtomic(target, "new"));
    EXPECT_TRUE(FS::DuplicateFile(target, copied));
    EXPECT_TRUE(FS::RenameFile(moved, dir.Path("moved"), false));
    for (const char* const name : {"target", "copied", "moved"}) {
        SCOPED_TRACE(name);
        struct ::stat facts {};
        ASSERT_EQ(::stat(dir.Native(name).c_str(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 07777U, 0640U);
        EXPECT_EQ(::getxattr(dir.Native(name).c_str(), "system.posix_acl_access", nullptr, 0), -1);
    }
}

TEST_F(Mounts, CopyEndsThoughItsSourceTellsNoSizeOrGrows) {
    const std::string copy = dir.Path("copy");
    EXPECT_TRUE(FS::DuplicateFile("C:\\proc\\self\\status", copy));
    EXPECT_THAT(dir.Read("copy"), testing::HasSubstr("Name:"));
    const std::string old = dir.Write("old", "old");
    EXPECT_FALSE(FS::DuplicateFile("C:\\proc\\self\\pagemap", old));
    EXPECT_EQ(platform::LastError(), 8U);
    EXPECT_EQ(dir.Read("old"), "old");
}

}  // namespace
}  // namespace quillon
