#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <iterator>

#include "content/ContentCopy.h"
#include "support/TempDir.h"
#include "support/posix/FailingCalls.h"
#include "system/ContentFiles.h"
#include "system/Sha256.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

const std::string kOld = "the old content";
const std::string kNew = std::string(100'000, 'n') + "the new content";

/// Refuses one call after the other of a download into "to/sub", and checks its files after each.
class RefusedDownloads : public TempDirTest {
protected:
    /// Returns whether all of it was said to be done.
    using Operation = std::function<bool(const std::string& source)>;

    void RefuseEach(const std::vector<std::string>& names, const Operation& download) {
        const std::string source = dir.Write("source/file", kNew);
        dir.Write("source/other", kNew);
        int runs = 0;
        for (const bool isReplacing : {true, false}) {
            for (const int error : {EIO, ENOSPC, EACCES, EINTR}) {
                int number = 1;
                while (number < kMostCalls && Refuse(number, error, isReplacing, names, download)) ++number;
                EXPECT_LT(number, kMostCalls);
                runs += number - 1;
            }
        }
        EXPECT_GT(runs, 20);
        std::cout << names.size() << " files: " << runs << " refused calls\n";
    }

private:
    static constexpr int kMostCalls = 200;

    /// False when it makes fewer calls.
    bool Refuse(int number, int error, bool isReplacing, const std::vector<std::string>& names,
                const Operation& download) {
        SCOPED_TRACE("call " + std::to_string(number) + ", errno " + std::to_string(error));
        fs::remove_all(dir.Native("to"));
        for (const std::string& name : names)
            if (isReplacing) dir.Write("to/sub/" + name, kOld);
        FailingFileCalls& calls = ThisThreadsFileCalls();
        calls = {number, error, 0, number % 2 == 0};
        const bool isDone = download(dir.Path("source"));
        const bool wasRefused = calls.seen >= number;
        calls = {};
        EXPECT_TRUE(isDone || wasRefused) << "it failed on its own";
        std::ptrdiff_t found = 0;
        for (const std::string& name : names) {
            const bool isThere = dir.Exists("to/sub/" + name);
            const std::string content = isThere ? dir.Read("to/sub/" + name) : "";
            EXPECT_TRUE(content == kNew || content == (isReplacing ? kOld : "")) << content.size();
            EXPECT_TRUE(!isDone || content == kNew);
            found += isThere ? 1 : 0;
        }
        const std::ptrdiff_t entries =
            dir.Exists("to/sub") ? std::distance(fs::directory_iterator(dir.Native("to/sub")), {}) : 0;
        EXPECT_EQ(entries, found) << "a temporary file stays";
        return wasRefused;
    }
};

agent::ContentItem ItemOf(const std::string& name) {
    agent::Sha256 hash;
    hash.Add(kNew.data(), kNew.size());
    return {"sub\\" + name, static_cast<std::int64_t>(kNew.size()), hash.Finish()};
}

}  // namespace

TEST_F(RefusedDownloads, OneFileOrMoreWithOneSyncLeaveTheOldContentOrTheNew) {
    std::vector<std::string> names = {"file"};
    const auto download = [&](const std::string& source) {
        agent::DestinationFolder folder;
        agent::Progress progress(0);
        if (!folder.Open(dir.Path("to")).empty()) return false;
        std::vector<std::unique_ptr<agent::NewFile>> files(names.size());
        bool isDone = true;
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::string from = source + '\\' + names[i];
            isDone &= PrepareContent(ItemOf(names[i]), from, folder, progress, files[i]).code == 0;
        }
        for (const agent::CopyOutcome& outcome : CommitContent(folder, files)) isDone &= outcome.code == 0;
        return isDone;
    };
    RefuseEach(names, download);
    names.emplace_back("other");
    RefuseEach(names, download);
}

}  // namespace quillon::test
