#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace quillon::test {
namespace {

using FS = FileSystemUtils;
using Encoding = FS::FileEncoding;
using FileEncodingDetection = TempDirTest;
using FileEncodingRead = TempDirTest;
using FileEncodingWrite = TempDirTest;
using std::string_literals::operator""s;

constexpr auto kBeyond = static_cast<Encoding>(7);
const std::string kLeMark = "\xFF\xFE", kBeMark = "\xFE\xFF", kUtf8Mark = "\xEF\xBB\xBF";
const std::u16string kEnglish = u"The quick brown fox jumps over the lazy dog, line after line.\r\nAgain.";
const std::string kEnglishText(kEnglish.begin(), kEnglish.end());
const std::u16string kUnits = u"a\u00E9\0\xD83D\xDE00"s;
const std::string kText = "a\xC3\xA9\0\xF0\x9F\x98\x80"s;  // the same

std::string Be(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) bytes += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    return bytes;
}

std::string Le(std::u16string_view text) {
    std::string bytes = Be(text);
    for (std::size_t i = 0; i < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

TEST_F(FileEncodingDetection, TakesMarkThenUtf8SequenceThenUtf16TestThenAnsi) {
    const std::string pad(61, 'a');  // past the words that are skipped at once
    const std::tuple<const char*, std::string, Encoding> cases[] = {
        {"empty", "", FS::ANSI},
        {"little-endian mark before a UTF-8 sequence", kLeMark + "\xC3\xA9", FS::UTF16LE},
        {"big-endian mark and an odd byte", kBeMark + "x", FS::UTF16BE},
        {"two bytes", "\xC3\xA9", FS::UTF8NOBOM},
        {"three bytes behind ASCII", pad + "\xE2\x82\xAC", FS::UTF8NOBOM},
        {"four bytes among zeros", "\0\xF0\x9F\x98\x80\0"s, FS::UTF8NOBOM},
        {"one good sequence suffices", pad + "\xFF\x80\xC3(\xC3\xA9\xC3", FS::UTF8NOBOM},
        {"code page letter", "a\xE9y", FS::ANSI},
        {"cut sequence", pad + "\xE2\x82", FS::ANSI},
        {"a failed sequence takes its bytes along", pad + "\xE2(\xC3\xA9 and \xC3\xC3\xA9", FS::ANSI},
        {"bytes that are no lead", pad + "\xF8\x88\x80\x80\x80 and \x80\xBF\xFF", FS::ANSI},
        {"a line of ASCII", kEnglishText, FS::ANSI},
        {"UTF-16 without a mark, Cyrillic",
         Le(u"\u041F\u0440\u0438\u0432\u0435\u0442, \u043C\u0438\u0440 \u0438 \u0432\u0441\u0435"),
         FS::UTF16LENOBOM},
        {"UTF-16 without a mark, odd", Le(kEnglish) + "x", FS::UTF16LENOBOM},
        {"with an invalid unit behind", Le(kEnglish + u"\xDC00" + kEnglish), FS::UTF16LENOBOM},
        {"with an invalid unit at once", Le(u"\xDC00" + kEnglish), FS::ANSI},
        {"with the bytes of a UTF-8 sequence", Le(kEnglish + u"\xA9C3"), FS::UTF8NOBOM},
    };
    for (const auto& [what, bytes, expected] : cases) {
        std::istringstream stream(bytes);
        EXPECT_EQ(FS::GetFileEncoding(stream, bytes.size()), expected) << what;
        std::string path = dir.Write("file", bytes);
        EXPECT_EQ(FS::GetFileEncoding(path), expected) << what;
    }
}

TEST_F(FileEncodingDetection, GoesByTheSizeThatItIsTold) {
    const auto detect = [](const std::string& bytes, std::uint64_t size) {
        std::istringstream stream(bytes);
        return FS::GetFileEncoding(stream, size);
    };
    EXPECT_EQ(detect(kLeMark, 1), FS::ANSI);
    EXPECT_EQ(detect(kUtf8Mark, 2), FS::UTF8NOBOM);  // no mark, but a sequence
    EXPECT_EQ(detect("\xC3\xA9", 3), FS::ANSI);      // the reading fails before the search
    EXPECT_EQ(detect(Le(kEnglish), 0), FS::ANSI);
    EXPECT_EQ(detect(Le(kEnglish), ~0ULL), FS::UTF16LENOBOM);
}

TEST_F(FileEncodingDetection, StreamChecksLeaveAnEncodingThatTheyDoNotFind) {
    Encoding encoding = kBeyond;
    std::istringstream plain("plain"), good("a\xC3\xA9z");
    EXPECT_FALSE(FS::CheckForUTF8Sequences(plain, encoding));
    FS::CheckForUTF16WithoutBom(plain, encoding, 5);
    EXPECT_FALSE(FS::CheckBufferForBom(kUtf8Mark.data(), 2, encoding));
    good.setstate(std::ios::failbit);
    EXPECT_FALSE(FS::CheckForUTF8Sequences(good, encoding));
    EXPECT_EQ(encoding, kBeyond);

    good.clear();
    EXPECT_TRUE(FS::CheckForUTF8Sequences(good, encoding));
    EXPECT_EQ(encoding, FS::UTF8NOBOM);
    EXPECT_EQ(good.get(), 'z');
}

TEST_F(FileEncodingRead, DecodesAsForcedAndTellsWhatItDetected) {
    const std::tuple<const char*, std::string, Encoding, std::string, Encoding> cases[] = {
        {"empty", "", FS::NOTSET, "", FS::ANSI},
        {"ANSI as it is", "a\xE9y", FS::NOTSET, "a\xE9y", FS::ANSI},
        {"forced ANSI keeps the mark", kUtf8Mark + "\0a"s, FS::ANSI, kUtf8Mark + "\0a"s, FS::UTF8},
        {"forced UTF-8 loses any mark", kBeMark + "a\xFF", FS::UTF8, "a\xFF", FS::UTF16BE},
        {"little-endian, odd", kLeMark + Le(kUnits) + "x", FS::NOTSET, kText, FS::UTF16LE},
        {"the mark decides, not the name", kLeMark + Le(kUnits), FS::UTF16BE, kText, FS::UTF16LE},
        {"big-endian without a mark", Be(kUnits), FS::UTF16LE, kText, FS::ANSI},
        {"a second mark goes too", kLeMark + Le(u"\uFEFFx"), FS::NOTSET, "x", FS::UTF16LE},
        {"UTF-16 without a mark", Le(kEnglish), FS::NOTSET, kEnglishText, FS::UTF16LENOBOM},
        {"a wrong mark is text", kBeMark + Le(u"x"), FS::UTF16LENOBOM, "\xEF\xBF\xBEx", FS::UTF16BE},
        {"lone low surrogate", kBeMark + Be(u"ab\xDC00z"), FS::NOTSET, "ab", FS::UTF16BE},
        {"high surrogate at the end", kLeMark + Le(u"ab\xD83D"), FS::NOTSET, "ab", FS::UTF16LE},
    };
    for (const auto& [what, bytes, forced, text, expected] : cases) {
        Encoding detected = FS::NOTSET;
        EXPECT_EQ(FS::ReadFile(dir.Write("\xC3\xA9.txt", bytes), detected, forced), text) << what;
        EXPECT_EQ(detected, expected) << what;
    }
    Encoding detected = FS::NOTSET;
    const std::string path = dir.Write("file", kLeMark + "x");
    EXPECT_EQ(FS::ReadANSIFile(path, detected), kLeMark + "x");
    EXPECT_EQ(FS::ReadUtf8File(path, detected), "x");
    EXPECT_EQ(FS::ReadUtf16LeFile(path, detected) + FS::ReadUtf16BeFile(path, detected), "");
}

TEST_F(FileEncodingRead, ALimitIsKeptAndTheReasonTold) {
    std::string text = "old";
    Encoding detected = kBeyond;
    const std::string path = dir.Write("file", kLeMark + Le(kUnits));
    const std::uint64_t size = 2 + 2 * kUnits.size();
    EXPECT_TRUE(FS::ReadFileLimited(path, size, text, detected));
    EXPECT_EQ(text, kText);
    EXPECT_EQ(detected, FS::UTF16LE);
    detected = kBeyond;
    EXPECT_FALSE(FS::ReadFileLimited(path, size - 1, text, detected));
    EXPECT_THAT(StringUtils::GetLastErrorAsString(), testing::StartsWith("(8/"));
    EXPECT_FALSE(FS::ReadFileLimited(dir.Path("missing"), size, text, detected));
    EXPECT_THAT(StringUtils::GetLastErrorAsString(), testing::StartsWith("(2/"));
    EXPECT_EQ(text, "");
    EXPECT_EQ(detected, kBeyond);
}

TEST_F(FileEncodingRead, GrowingFileGivesAPrefixOfItsContent) {
    const std::string path = dir.Write("file", kUtf8Mark);
    // Opened before the reading begins, which asks for the size without sharing for writing.
    std::ofstream file(dir.Native("file"), std::ios::app | std::ios::binary);
    ASSERT_TRUE(file.is_open());
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        while (!stop) file << std::string(1000, 'x') << std::flush;
    });
    for (std::string text; text.size() < 200'000;) {
        Encoding detected = FS::NOTSET;
        text = FS::ReadFile(path, detected, FS::UTF8);
        EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
    }
    stop = true;
    writer.join();
}

TEST_F(FileEncodingWrite, WritesOneMarkAndAppendsNone) {
    const std::tuple<Encoding, std::string, std::string> cases[] = {
        {FS::ANSI, "", kText},
        {FS::UTF8, kUtf8Mark, kText},
        {FS::UTF8NOBOM, "", kText},
        {FS::UTF16LE, kLeMark, Le(kUnits)},
        {FS::UTF16LENOBOM, kLeMark, Le(kUnits)},
        {FS::UTF16BE, kBeMark, Be(kUnits)},
    };
    const std::string path = dir.Write("file", "a longer text that must not shine through");
    for (const auto& [encoding, written, body] : cases) {
        for (const std::string& mark : {""s, kUtf8Mark, kLeMark, kBeMark}) {
            SCOPED_TRACE(FS::FileEncodingToString(encoding) + mark);
            EXPECT_TRUE(FS::WriteFile(path, mark + kText, encoding));
            Encoding current = FS::NOTSET;
            EXPECT_TRUE(FS::AppendToFile(path, mark + kText, current, encoding));
            EXPECT_EQ(dir.Read("file"), written + body + body);
        }
    }
}

TEST_F(FileEncodingWrite, InvalidUtf8ForUtf16ThrowsAndLeavesTheFile) {
    const std::string path = dir.Write("file", "kept");
    for (const std::string text : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"}) {
        SCOPED_TRACE(testing::PrintToString(text));
        Encoding current = FS::UTF16LENOBOM;
        EXPECT_THROW(FS::WriteUtf16BeFile(path, text), std::range_error);
        EXPECT_THROW(static_cast<void>(FS::AppendToFile(path, text, current, FS::NOTSET)), std::range_error);
        EXPECT_EQ(dir.Read("file"), "kept");
    }
}

TEST_F(FileEncodingWrite, AppendChoosesRequestedThenCurrentThenDetected) {
    const std::string path = dir.Write("file", kLeMark);
    Encoding current = FS::NOTSET;
    EXPECT_FALSE(FS::AppendToFile(dir.Path("missing"), "x", current, FS::NOTSET));
    EXPECT_EQ(current, FS::NOTSET);
    EXPECT_FALSE(dir.Exists("missing"));
    const Encoding steps[][2] = {
        {FS::NOTSET, FS::UTF16LE}, {FS::UTF8, FS::UTF8}, {FS::NOTSET, FS::UTF8}, {FS::UTF16BE, FS::UTF16BE}};
    for (const auto& [requested, expected] : steps) {
        SCOPED_TRACE(requested);
        EXPECT_TRUE(FS::AppendToFile(path, "x", current, requested));
        EXPECT_EQ(current, expected);
    }
    EXPECT_EQ(dir.Read("file"), kLeMark + "x\0xx\0x"s);
}

TEST_F(FileEncodingWrite, ValuesOutsideTheTableAreLoggedWithTheOperationsNumber) {
    RecordingLogger log;
    const std::string path = dir.Write("file", "kept");
    Encoding detected = FS::NOTSET;
    EXPECT_EQ(FS::ReadFile(path, detected, kBeyond), "");
    EXPECT_EQ(detected, FS::ANSI);
    EXPECT_FALSE(FS::WriteFile(path, "x", FS::NOTSET));
    EXPECT_FALSE(FS::AppendToFile(path, "\xFF", detected, static_cast<Encoding>(-1)));
    EXPECT_EQ(dir.Read("file"), "kept");
    EXPECT_THAT(log.Lines(RecordingLogger::Level::Error),
                testing::ElementsAre("File encoding format *** out of range *** not supported (2311)",
                                     "File encoding format NOTSET not supported (2406)",
                                     "File encoding format *** out of range *** not supported (2535)"));
}

}  // namespace
}  // namespace quillon::test
