#include "quillon/LogText.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "quillon/DataTable.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LsZFile.h"
#include "quillon/NetworkUtils.h"
#include "quillon/ProcessUtils.h"
#include "quillon/WmiConnector.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"

namespace quillon::test {

TEST(LogText, EscapesWhatBeginsALineOrSteersATerminal) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"a path and UTF-8 stay", "C:\\new\\\xC3\xA9 \xE2\x82\xAC", "C:\\new\\\xC3\xA9 \xE2\x82\xAC"},
        {"line ends and tab", "a\r\nb\tc", "a\\r\\nb\\tc"},
        {"escape, NUL and delete", std::string("\x1B[2J\0\x7F", 6), "\\x1B[2J\\x00\\x7F"},
        {"C1 controls", "\xC2\x85\xC2\x9B\xC2\xA0", "\\x85\\x9B\xC2\xA0"},
        {"separators and marks of direction",
         "\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAE\xE2\x81\xA9\xE2\x80\x8F\xD8\x9C|",
         "\\u2028\\u2029\\u202E\\u2069\\u200F\\u061C|"},
        {"their neighbours stay", "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xAA",
         "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xAA"},
        {"cut characters stay", "\xC2", "\xC2"},
        {"what is no UTF-8 stays", "\xE2@( \xE2\x80.", "\xE2@( \xE2\x80."},
    };
    for (const auto& [what, in, expected] : cases) EXPECT_EQ(LogText::OneLine(in), expected) << what;
}

TEST(LogText, RepairsAndCutsBetweenCharacters) {
    EXPECT_EQ(LogText::RepairUtf8("\xF0\x9F\x98|\xED\xA0\xE4\xB8\xAD"),
              "\xEF\xBF\xBD|\xEF\xBF\xBD\xEF\xBF\xBD\xE4\xB8\xAD");
    EXPECT_EQ(LogText::TruncateUtf8("a\xE4\xB8\xADz", 3), "a...");
    EXPECT_EQ(LogText::TruncateUtf8("a\xE4\xB8\xAD", 4), "a\xE4\xB8\xAD");
    EXPECT_EQ(LogText::TruncateUtf8("abc", 0), "...");
}

TEST(LogText, NoTextOfOthersForgesAnEntryOfTheLibrary) {
    const std::string forged = "C:\\x\r\n2026-11-25 18:04:05.123 [ 4711] ERROR - forged\x1B[2J";
    RecordingLogger log;
    FileSystemUtils::EraseFile(forged, false);
    FileSystemUtils::GetVersionInformation(forged, forged);
    NetworkUtils::IpInRange(forged, "1.2.3.4");
    NetworkUtils::IpInRange("1.2.3.4", forged);
    static_cast<void>(LsZFile(forged, nullptr));
    WmiConnector wmi(&log);
    DataTable table(VariantList(Variant("name", forged)));
    wmi.Connect(forged);
    wmi.Connect("ROOT\\CIMV2");
    wmi.ExecuteQuery(forged, &table);
    DataTable(VariantList(Variant("name", forged))).Dump("title", &log, 0);
    ProcessUtils::RunCliCommand(CommandOf(forged, log));
    ProcessUtils::RunCliCommand(CommandOf(ChildCommand("print", {"x|forged", "3"}), log));
    const std::vector<std::string> entries = log.Lines();
    const auto isOneLine = [](const std::string& entry) {
        return entry.find_first_of("\n\r\x1B") == std::string::npos;
    };
    EXPECT_THAT(entries, testing::Each(testing::Truly(isOneLine)));
    EXPECT_GT(std::count_if(entries.begin(), entries.end(),
                            [](const auto& entry) { return entry.find("forged") != std::string::npos; }),
              12);
}

}  // namespace quillon::test
