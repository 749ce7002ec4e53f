#include <gmock/gmock.h>

#include "host/Host.h"
#include "quillon/DataTableIO.h"
#include "quillon/StringUtils.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/VersionedFile.h"

namespace quillon::test {

TEST(FilesModule, FindsFilesTheirTextAndTheirVersions) {
    const TempDir dir;
    const agent::Host host({"", ICLogger::Level::Fatal}, dir.Path("stores"));
    const auto run = [&](const std::string& method, std::vector<std::string> arguments) {
        const InvocationResult result = host.Run("Files." + method, arguments);
        std::string text = ToCsv(result.resultTable);
        std::erase(text, '\r');
        StringUtils::ReplaceStringInPlace(text, dir.Path() + '\\', "", false);
        return std::to_string(result.resultCode) + '|' + text;
    };
    const std::string wide = "path=" + dir.Write("wide.txt", "\xFF\xFE" + Units("one\r\ntwo\n"));
    dir.Write("plain.bin", "x");
    EXPECT_EQ(run("Encoding", {"path=" + dir.Path("*.txt")}), "0|File,Encoding\nwide.txt,UTF16LE\n");
    EXPECT_EQ(run("Read", {wide, "lines=true"}),
              "0|Encoding,Text,LineNumber\nUTF16LE,one,0\nUTF16LE,two,1\n");
    EXPECT_EQ(run("Read", {wide, "maxSize=19"}), "3|");
    EXPECT_EQ(run("Read", {wide, "encoding=UTF9"}), "2|");
    EXPECT_EQ(run("Read", {"path=" + dir.Path("missing")}), "3|");
    if (!kWindows) {  // which has no files that tell no size
        EXPECT_EQ(run("Read", {"path=/proc/self/pagemap", "maxSize=1000"}), "3|");
        EXPECT_THAT(run("Read", {"path=/proc/self/status"}), testing::StartsWith("0|Encoding,Text\nANSI,"));
    }
    EXPECT_EQ(run("Find", {"path=" + dir.Path("none*")}), "0|File,Size,Modified\n");
    if (!kWindows) {  // which takes a name that is too long for one that is not there
        const std::string unlisted = dir.Path(std::string(300, 'x') + "\\*");
        EXPECT_EQ(run("Find", {"path=" + unlisted}), "3|File,Size,Modified\n");
    }
    EXPECT_THAT(run("Find", {"path=" + dir.Path("p*")}),
                testing::StartsWith("0|File,Size,Modified\nplain.bin,1,2"));
    const std::string agent = ToLibraryPath(ProgramFolder() / "quillon-agent");
    EXPECT_THAT(run("Versions", {"path=" + agent + (kWindows ? ".exe" : "")}),
                testing::HasSubstr(",1.0.0.0,1.0.0.0,Quillon reference agent,Quillon Client,quillon-agent"));
}

TEST(FilesModule, AndOthersTellWhyTheyCannotLookForAFile) {
    if (kWindows) GTEST_SKIP() << "a name that is too long counts as one that is not there";
    const TempDir dir;
    const std::string tooLong = dir.Path(std::string(300, 'x'));
    const agent::Host host({"", ICLogger::Level::Fatal}, tooLong);
    const struct {
        const char* method;
        std::string argument;
    } cases[] = {{"Files.Read", "path=" + tooLong},
                 {"Content.ReadList", "path=" + tooLong},
                 {"Certificates.List", "folder=" + tooLong},
                 {"Certificates.Check", "file=" + tooLong},
                 {"Store.Check", "database=a"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.method);
        const InvocationResult result = host.Run(c.method, {c.argument});
        EXPECT_EQ(result.resultCode, InvocationResult::kSystemFailure);
        EXPECT_THAT(result.errorMessage, testing::HasSubstr(": (206/"));
    }
}

}  // namespace quillon::test
