#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "support/TempDir.h"
#include "support/posix/FailingCalls.h"
#include "system/ContentFiles.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

const std::string kOld = "the old content";
const std::string kNew = std::string(100'000, 'n') + "the new content";

/// Downloads one file as the agent does; returns the fault.
std::string Download(const std::string& source, const std::string& to) {
    agent::SourceFile from;
    agent::DestinationFolder folder;
    std::unique_ptr<agent::NewFile> file;
    std::string fault = from.Open(source);
    if (fault.empty()) fault = folder.Open(to);
    if (fault.empty()) fault = folder.Create({"sub", "file"}, file);
    std::string piece(32 * 1024, '\0');
    for (std::size_t count = 1; fault.empty() && count > 0;) {
        count = piece.size();
        fault = from.Read(piece.data(), count);
        if (fault.empty() && count > 0) fault = file->Write(piece.data(), count);
    }
    return fault.empty() ? file->Commit() : fault;
}

}  // namespace

TEST_F(TempDirTest, RefusedCallsOfADownloadLeaveTheOldContentOrTheNew) {
    constexpr int kMostCalls = 200;
    const std::string source = dir.Write("source", kNew);
    int runs = 0;
    for (const bool isReplacing : {true, false}) {
        for (const int error : {EIO, ENOSPC, EACCES, EINTR}) {
            for (int number = 1; number < kMostCalls; ++number, ++runs) {
                SCOPED_TRACE("call " + std::to_string(number) + ", errno " + std::to_string(error));
                fs::remove_all(dir.Native("to"));
                if (isReplacing) dir.Write("to/sub/file", kOld);
                FailingFileCalls& calls = ThisThreadsFileCalls();
                calls = {number, error, 0, number % 2 == 0};
                const std::string fault = Download(source, dir.Path("to"));
                const bool wasRefused = calls.seen >= number;
                calls = {};
                const std::string found = dir.Exists("to/sub/file") ? dir.Read("to/sub/file") : "";
                EXPECT_TRUE(found == kNew || found == (isReplacing ? kOld : "")) << found.size() << " bytes";
                EXPECT_TRUE(fault.empty() ? found == kNew : wasRefused) << fault;
                const std::ptrdiff_t entries =
                    dir.Exists("to/sub") ? std::distance(fs::directory_iterator(dir.Native("to/sub")), {})
                                         : 0;
                EXPECT_EQ(entries, found.empty() ? 0 : 1) << "a temporary file stays";
                if (!wasRefused) break;
            }
        }
    }
    EXPECT_GT(runs, 20);
    std::cout << "download: " << runs << " refused calls\n";
}

}  // namespace quillon::test
