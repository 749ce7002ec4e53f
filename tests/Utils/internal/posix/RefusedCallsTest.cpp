#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <iostream>

#include "platform/ErrorText.h"
#include "platform/ProcessFactsApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/TemporaryFile.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/VersionedFile.h"
#include "support/posix/FailingCalls.h"
#include "support/posix/RefusedCalls.h"

namespace fs = std::filesystem;

namespace quillon {
namespace {

using FS = FileSystemUtils;

const std::string kOld = "the old content";
const std::string kNew = std::string(300'000, 'n') + "the new content";
constexpr int kErrors[] = {EIO, ENOSPC, EACCES, EINTR};

/// Refuses one call after the other of an operation that puts new content in the place of "to/file".
class RefusedCalls : public testing::Test {
protected:
    using Operation = std::function<bool(const std::string& source, const std::string& target)>;

    void SetUp() override { fs::create_directory(dir.Native("to")); }

    /// Runs the operation with the call of that number refused; false when it makes fewer calls.
    bool Refuse(int number, int error, bool isReplacing, bool keepsSource, const Operation& operation) {
        SCOPED_TRACE("call " + std::to_string(number) + ", errno " + std::to_string(error));
        const std::string source = dir.Write("source", kNew);
        if (isReplacing) dir.Write("to/file", kOld);
        if (!isReplacing) fs::remove(dir.Native("to/file"));

        test::FailingFileCalls& calls = test::ThisThreadsFileCalls();
        calls = {number, error, 0, number % 2 == 0};
        bool isDone = false;
        try {
            isDone = operation(source, dir.Path("to\\file"));
        } catch (const fs::filesystem_error&) {
        }
        const bool wasRefused = calls.seen >= number;
        calls = {};

        const std::string target = dir.Exists("to/file") ? dir.Read("to/file") : "";
        EXPECT_TRUE(target == kNew || target == (isReplacing ? kOld : "")) << target.size() << " bytes";
        EXPECT_TRUE(!isDone || target == kNew);
        EXPECT_TRUE(isDone || wasRefused) << "it failed on its own";
        const std::string left = dir.Exists("source") ? dir.Read("source") : "";
        EXPECT_TRUE(left == kNew || (!keepsSource && left.empty() && target == kNew)) << "the source is lost";
        for (const auto& entry : fs::directory_iterator(dir.Native("to")))
            EXPECT_EQ(entry.path().filename(), "file") << "a temporary file stays";
        return wasRefused;
    }

    void RefuseEach(const char* what, bool keepsSource, const Operation& operation) {
        constexpr int kMostCalls = 200;
        int runs = 0;
        for (const bool isReplacing : {true, false}) {
            for (const int error : kErrors) {
                int number = 1;
                while (Refuse(number, error, isReplacing, keepsSource, operation)) {
                    ++runs;
                    ASSERT_LT(++number, kMostCalls) << what;
                }
                EXPECT_GT(number, 1) << what << ": no call was refused";
            }
        }
        std::cout << what << ": " << runs << " refused calls\n";
    }

    const test::TempDir dir;
};

TEST_F(RefusedCalls, CopyLeavesTheOldContentOrTheNew) {
    RefuseEach("DuplicateFile", true,
               [](const std::string& from, const std::string& to) { return FS::DuplicateFile(from, to); });
    RefuseEach("FileCopy", true, [](const std::string& from, const std::string& to) {
        FS::FileCopy(from, to);  // its result depends on the privileges
        return FS::ReadContentsOfFile(to) == kNew;
    });
}

TEST_F(RefusedCalls, AtomicWriteLeavesTheOldContentOrTheNew) {
    RefuseEach("WriteFileAtomic", true,
               [](const std::string&, const std::string& to) { return FS::WriteFileAtomic(to, kNew); });
}

TEST_F(RefusedCalls, MoveLosesNothing) {
    RefuseEach("RenameFile", false,
               [](const std::string& from, const std::string& to) { return FS::RenameFile(from, to, true); });
}

TEST_F(RefusedCalls, MoveToAnotherVolumeLosesNothing) {
    const fs::path memory = "/dev/shm";
    struct ::stat here {
    }, there{};
    if (::stat(dir.Native().c_str(), &here) != 0 || ::stat(memory.c_str(), &there) != 0 ||
        here.st_dev == there.st_dev)
        GTEST_SKIP() << "there is only one volume";
    const fs::path folder = memory / dir.Native().filename();
    fs::create_directory(folder);
    RefuseEach("RenameFile to another volume", false, [&](const std::string& from, const std::string& to) {
        // The way is there and back: from the disk to memory and into the target's place.
        const std::string between = test::ToLibraryPath(folder / "file");
        std::error_code ignored;
        fs::remove(folder / "file", ignored);
        const bool isMoved = FS::RenameFile(from, between, true) && FS::RenameFile(between, to, true);
        // A move that broke off in between has left its content there.
        if (!isMoved && fs::exists(folder / "file") && !fs::exists(test::ToNative(from)))
            fs::copy_file(folder / "file", test::ToNative(from));
        for (const auto& entry : fs::directory_iterator(folder)) EXPECT_EQ(entry.path().filename(), "file");
        return isMoved;
    });
    fs::remove_all(folder);
}

TEST_F(RefusedCalls, WalkWithoutDescriptorsIsNotComplete) {
    for (const char* const file : {"to/a/b/file", "to/c/file"}) dir.Write(file, "x");
    bool isRefused = true;
    int number = 0;
    while (isRefused) {
        ASSERT_LT(++number, 200);
        int files = 0;
        test::ThisThreadsFileCalls() = {number, EMFILE, 0, false};
        const auto end = FS::WalkFiles(dir.Path("to"), {}, [&](const auto&) { return ++files > 0; });
        const std::uint32_t code = platform::LastError();
        isRefused = test::ThisThreadsFileCalls().seen >= number;
        test::ThisThreadsFileCalls() = {};
        EXPECT_EQ(end, files == 2 && !isRefused ? FS::WalkEnd::Complete : FS::WalkEnd::Failed) << number;
        EXPECT_TRUE(code == 4 || !isRefused) << code;
    }
    EXPECT_GT(number, 4) << "each of the four directories is opened";
}

TEST_F(RefusedCalls, SearchThatBreaksOffTellsWhy) {
    for (const char* const file : {"to/a", "to/b", "to/c"}) dir.Write(file, "x");
    constexpr int kEntries = 5;  // "." and ".." as well
    for (int number = 1; number <= kEntries + 1; ++number) {
        SCOPED_TRACE(number);
        std::vector<std::string> files;
        test::ThisThreadsFileCalls() = {number, EIO, 0, false};
        const std::uint32_t count = FS::FindFiles(dir.Path("to\\*"), &files);
        const std::uint32_t code = platform::LastError();
        test::ThisThreadsFileCalls() = {};
        EXPECT_EQ(code, 1117u);
        EXPECT_EQ(count, files.size());
    }
    test::ThisThreadsFileCalls() = {kEntries, EIO, 0, false};
    EXPECT_FALSE(platform::ListProcessIds());
    test::ThisThreadsFileCalls() = {};
}

TEST_F(RefusedCalls, VersionOfAFileThatCouldNotBeOpenedIsAskedForAgain) {
    const std::string file = dir.Write("file", test::PeFile(test::VersionBlock("", "")));
    test::ThisThreadsFileCalls() = {1, EMFILE, 0, false};
    EXPECT_EQ(FS::GetVersionInformation(file, ""), FS::VersionInformation{});
    EXPECT_EQ(platform::LastError(), 4u);
    test::ThisThreadsFileCalls() = {};
    EXPECT_EQ(FS::GetVersionInformation(file, "").fileVersion, "10.0.19041.1");
}

TEST_F(RefusedCalls, TemporaryPlacesAreThereOrNotReturned) {
    int refused = 0;
    for (int number = 1; number < 10; ++number) {
        test::ThisThreadsFileCalls() = {number, EACCES, 0, false};
        const TemporaryFile file;
        const TemporaryDirectory directory;
        const std::string path = FS::GetTemporaryDirectory();
        refused += test::ThisThreadsFileCalls().seen >= number ? 1 : 0;
        test::ThisThreadsFileCalls() = {};
        EXPECT_TRUE(file.Path().empty() || fs::is_regular_file(test::ToNative(file.Path())));
        EXPECT_TRUE(directory.Path().empty() || fs::is_directory(test::ToNative(directory.Path())));
        const bool isThere = FS::IsDirectory(path);
        EXPECT_EQ(isThere && FS::EraseDirectory(path), isThere);
    }
    EXPECT_GE(refused, 3);
}

TEST(TemporaryPlaces, MayStayWithoutTheMemoryToDeleteThem) {
    if (test::kSanitized) GTEST_SKIP() << "memory is the sanitizer's";
    std::string file, directory;
    {
        const TemporaryFile ownFile;
        const TemporaryDirectory ownDirectory;
        file = ownFile.Path();
        directory = ownDirectory.Path();
        test::TheRefusedCalls() = {test::RefusedCalls::Memory, 0, 1'000'000};
    }
    test::TheRefusedCalls() = {};
    EXPECT_TRUE(!FS::Exists(file) || FS::EraseFile(file, true));
    EXPECT_TRUE(!FS::Exists(directory) || FS::EraseDirectory(directory));
}

}  // namespace
}  // namespace quillon
