#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstring>

#include "platform/ErrorText.h"
#include "quillon/FileSystemUtils.h"
#include "support/TempDir.h"
#include "support/posix/LocalSocket.h"

namespace quillon {
namespace {

using FS = FileSystemUtils;

// Pipes, sockets and devices have names in directories on Linux only.
using SpecialFiles = test::TempDirTest;

TEST_F(SpecialFiles, AreNeitherReplacedNorRead) {
    dir.Write("source", "content");
    dir.Write("folder/inner", "inner");
    ASSERT_EQ(::mkfifo(dir.Native("pipe").c_str(), 0600), 0);
    ::close(test::LocalSocket(dir.Native("socket").string(), SOCK_STREAM, &::bind));
    const bool hasDevice = ::mknod(dir.Native("device").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0;
    const std::string source = dir.Path("source"), folder = dir.Path("folder");
    for (const char* const name : {"pipe", "socket", "device"}) {
        if (std::strcmp(name, "device") == 0 && !hasDevice) continue;
        const std::string special = dir.Path(name);
        const std::pair<const char*, std::function<bool()>> cases[] = {
            {"a file over it", [&] { return FS::RenameFile(source, special, true); }},
            {"a directory over it", [&] { return FS::RenameFile(folder, special, true); }},
            {"a copy over it", [&] { return FS::DuplicateFile(source, special); }},
            {"a copy of it", [&] { return FS::DuplicateFile(special, dir.Path("copy")); }},
            {"an atomic write", [&] { return FS::WriteFileAtomic(special, "x"); }},
        };
        struct ::stat before {
        }, after{};
        ASSERT_EQ(::lstat(dir.Native(name).c_str(), &before), 0);
        for (const auto& [what, done] : cases) {
            SCOPED_TRACE(std::string(name) + ": " + what);
            EXPECT_FALSE(done());
            EXPECT_EQ(platform::LastError(), 5U);
            EXPECT_TRUE(::lstat(dir.Native(name).c_str(), &after) == 0 && after.st_ino == before.st_ino);
            EXPECT_FALSE(dir.Exists("copy"));
            EXPECT_EQ(dir.Read("source") + dir.Read("folder/inner"), "contentinner");
        }
        // It is moved and deleted as any name.
        EXPECT_TRUE(FS::RenameFile(special, dir.Path("moved"), false));
        EXPECT_TRUE(FS::RenameFile(source, dir.Path("aside"), false));
        EXPECT_TRUE(FS::RenameFile(dir.Path("aside"), source, false));
        EXPECT_TRUE(FS::EraseFile(dir.Path("moved"), false));
    }
}

}  // namespace
}  // namespace quillon
