#include "quillon/File.h"

#include <gmock/gmock.h>

#include <string>

#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace quillon::test {
namespace {

using FS = FileSystemUtils;
using FileTest = TempDirTest;
using testing::ElementsAre;

TEST_F(FileTest, ReadingDetectsAfreshWhateverWasSet) {
    File file = File::Open(dir.Path("file"));
    file.SetEncoding(FS::UTF16BE);
    EXPECT_EQ(file.Read(), "");
    EXPECT_EQ(file.GetEncoding(), FS::UTF16BE);
    dir.Write("file", "\xEF\xBB\xBFx\r\ny\nz\r\n");
    EXPECT_THAT(file.ReadByLine(), ElementsAre("x", "y\nz", ""));
    EXPECT_EQ(file.GetEncoding(), FS::UTF8);

    Variant value = Variant::NullVariant("kept");
    dir.Write("file", "text \t\r\n");
    file.ReadToVariant(value);
    EXPECT_EQ(value, Variant("kept", "text"));
    EXPECT_EQ(file.GetEncoding(), FS::ANSI);
}

TEST_F(FileTest, EncodingIsDetectedButNotStoredWhenAskedFor) {
    const File file = File::Create(dir.Path("file"));
    EXPECT_EQ(file.GetEncoding(), FS::NOTSET);
    dir.Write("file", "\xFF\xFE");
    EXPECT_EQ(file.GetEncoding(), FS::UTF16LE);
    dir.Write("file", "\xFE\xFF");
    EXPECT_EQ(file.GetEncoding(), FS::UTF16BE);
}

TEST_F(FileTest, WritesInTheGivenElseTheStoredEncoding) {
    RecordingLogger log;
    File file = File::Create(dir.Path("file"));
    EXPECT_FALSE(file.Write("x"));
    EXPECT_THAT(log.Lines(RecordingLogger::Level::Error),
                ElementsAre("No file encoding supplied to File::Write()"));
    EXPECT_TRUE(file.Write("x", FS::UTF16BE));
    EXPECT_EQ(dir.Read("file"), std::string("\xFE\xFF\0x", 4));
    EXPECT_FALSE(file.Write("x"));  // writing did not store it
    file.SetEncoding(FS::UTF8);
    EXPECT_TRUE(file.Write("x"));
    EXPECT_EQ(dir.Read("file"), "\xEF\xBB\xBFx");
    EXPECT_TRUE(file.Delete());
    EXPECT_FALSE(file.Delete() || file.Exists());
}

TEST_F(FileTest, AppendStoresTheEncodingThatItUsed) {
    File fresh = File::Open(dir.Path("fresh"));
    EXPECT_TRUE(fresh.Append("\xC3\xA9"));
    EXPECT_EQ(dir.Read("fresh"), "\xC3\xA9");
    EXPECT_EQ(fresh.GetEncoding(), FS::UTF8NOBOM);

    File marked = File::Open(dir.Write("marked", "\xFF\xFE"));
    EXPECT_TRUE(marked.Append("x") && marked.Append("y"));
    EXPECT_EQ(dir.Read("marked"), std::string("\xFF\xFEx\0y\0", 6));
    EXPECT_TRUE(marked.Append("z", FS::ANSI));
    File copy = marked;
    EXPECT_EQ(copy.GetEncoding(), FS::ANSI);
}

TEST_F(FileTest, EverySettingOfAnEncodingIsLoggedExceptNoneToNone) {
    RecordingLogger log;
    File file = File::Open("never opened");
    file.SetEncoding(FS::NOTSET);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    file.SetEncoding(FS::UTF8);
    file.SetEncoding(FS::UTF8);
    file.SetEncoding(static_cast<FS::FileEncoding>(7));
    EXPECT_THAT(log.Lines(RecordingLogger::Level::Debug),
                ElementsAre("The encoding of a file has been modified from NOTSET to UTF8",
                            "The encoding of a file has been modified from UTF8 to UTF8",
                            "The encoding of a file has been modified from UTF8 to *** out of range ***"));
}

}  // namespace
}  // namespace quillon::test
