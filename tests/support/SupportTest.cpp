#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <cerrno>
#include <memory>
#include <thread>

#include "support/ChildMain.h"
#include "support/LogLines.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

namespace quillon::test {

TEST(RecordingLogger, KeepsEveryEntryWholeAndClobbersErrno) {
    RecordingLogger log;
    errno = 0;
    log.Trace("%s", std::string(300'000, 'x').c_str());
    EXPECT_NE(errno, 0);
    std::thread([&log] { log.Fatal("of a thread, 100 %%"); }).join();
    EXPECT_THAT(log.Lines(), ElementsAre(std::string(300'000, 'x'), "of a thread, 100 %"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Fatal), ElementsAre("of a thread, 100 %"));
    log.Forget();
    EXPECT_THAT(log.Lines(), IsEmpty());
    log.Info("%ls", L"\xD800");  // has no narrow form in the C locale
    EXPECT_EQ(log.Lines().size(), 1U);
}

TEST(LogLines, AnEntryWithAnotherHeadIsAFailure) {
    EXPECT_THAT(EntriesOf("2026-11-25 13:35:14.001 [   42] INFO  - x\n"), ElementsAre("INFO  - x"));
    for (const char* line :
         {"2026-11-25 13:35:14.01 [   42] INFO  - x", "2026-11-25 13:35:14.001 [42] INFO  - x",
          "  2026-11-25 13:35:14.001 [   42] INFO  - x", "x"}) {
        SCOPED_TRACE(line);
        EXPECT_NONFATAL_FAILURE(EntriesOf(line), line);
    }
}

TEST(TempDir, GoesWithAllThatIsInIt) {
    TempDir outside;
    outside.Write("kept", "x");
    outside.SetReadOnly("kept", true);
    fs::path path;
    {
        const TempDir dir, other;
        path = dir.Native();
        EXPECT_NE(path, other.Native());
        dir.Write("folder/file", std::string("a\0\r\n", 4));
        EXPECT_EQ(dir.Read("folder/file"), std::string("a\0\r\n", 4));
        dir.SetReadOnly("folder/file", true);
        dir.SetReadOnly("folder", true);
        if (!kWindows) fs::create_symlink(outside.Native("kept"), dir.Native("link"));
    }
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(fs::status(outside.Native("kept")).permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST(Child, AFileIsAwaitedWhileItsFolderIsThere) {
    auto dir = std::make_unique<TempDir>();
    const fs::path path = dir->Native("file");
    std::thread writer([&dir] { dir->Write("file", ""); });
    EXPECT_TRUE(AwaitFile(path));
    writer.join();
    std::thread remover([&dir] { dir.reset(); });
    EXPECT_FALSE(AwaitFile(path.parent_path() / "other"));
    remover.join();
}

}  // namespace quillon::test
