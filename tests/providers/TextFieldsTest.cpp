#include "quillon/TextFields.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quillon::test {
namespace {

std::string Shown(const TextToDataTableParser& parser, const std::string& text) {
    DataTable table;
    parser.Parse(text, table);
    std::ostringstream shown;
    for (const VariantList& row : table) shown << row;
    return shown.str();
}

/// A parser with columns between blanks, the last of which takes the rest.
void AddBlankColumns(TextToDataTableParser& parser, const std::vector<std::string>& names) {
    for (std::size_t i = 0; i + 1 < names.size(); ++i)
        parser.AddField<std::string>(names[i], new BlankSeparatedField, 0);
    parser.AddField<std::string>(names.back(), new NullSeparatedField, 0);
}

/// The outputs of the Linux tools, but for the list of units, are recordings. Those of the Windows tools
/// follow their layouts.
TEST(TextFields, ReadColumnsBetweenBlanks) {
    const std::tuple<const char*, std::vector<std::string>, std::string, std::string> cases[] = {
        {"ps aux",
         {"user", "pid", "cpu", "mem", "vsz", "rss", "tty", "stat", "start", "time", "command"},
         "root         2  0.0  0.0      0     0 ?        S    17:58   0:00 [kthreadd]\n"
         "root     12353 46.9  0.4 146188 118220 ?       Rl   21:34   0:00 /usr/lib/gcc/cc1plus -quiet -I "
         ".\n",
         "{user=root, pid=2, cpu=0.0, mem=0.0, vsz=0, rss=0, tty=?, stat=S, start=17:58, time=0:00, "
         "command=[kthreadd]}{user=root, pid=12353, cpu=46.9, mem=0.4, vsz=146188, rss=118220, tty=?, "
         "stat=Rl, start=21:34, time=0:00, command=/usr/lib/gcc/cc1plus -quiet -I .}"},
        {"ss -tan",
         {"state", "recv", "send", "local", "peer"},
         "LISTEN 0      128        127.0.0.1:49697      0.0.0.0:*           \n"
         "ESTAB  0      0          127.0.0.1:42664    127.0.0.1:49697       \n",
         "{state=LISTEN, recv=0, send=128, local=127.0.0.1:49697, peer=0.0.0.0:*}"
         "{state=ESTAB, recv=0, send=0, local=127.0.0.1:42664, peer=127.0.0.1:49697}"},
        {"tabs", {"a", "b"}, "\t1\t 2  3\n", "{a=1, b=2  3}"},
    };
    for (const auto& [tool, names, text, expected] : cases) {
        TextToDataTableParser parser;
        AddBlankColumns(parser, names);
        EXPECT_EQ(Shown(parser, text), expected) << tool;
    }
}

TEST(TextFields, AHeadingGivesColumnsThatMayBeEmptyOrHoldBlanks) {
    const std::tuple<const char*, std::vector<TextColumn>, std::string, std::string> cases[] = {
        {"systemctl list-units", ReadTextHeading("  UNIT         LOAD   ACTIVE DESCRIPTION\r"),
         "  cron.service loaded active Regular background jobs\r\n* x.mount      not-fo        "
         "\xC3\xA9t\xC3\xA9\n",
         "{UNIT=cron.service, LOAD=loaded, ACTIVE=active, DESCRIPTION=Regular background jobs}"
         "{UNIT=* x.mount, LOAD=not-fo, DESCRIPTION=\xC3\xA9t\xC3\xA9}"},
        {"tasklist",
         ReadTextRuler("Image Name                     PID Session Name        Session#    Mem Usage",
                       "========================= ======== ================ =========== ============"),
         "System Idle Process              0 Services                   0          8 K\r\n"
         "\xC3\xA9 b.exe                      1234                            1     12,345 K\r\n",
         "{Image Name=System Idle Process, PID=0, Session Name=Services, Session#=0, Mem Usage=8 K}"
         "{Image Name=\xC3\xA9 b.exe, PID=1234, Session#=1, Mem Usage=12,345 K}"},
        {"no heading", ReadTextHeading(" \r\n"), "x\n", ""},
    };
    for (const auto& [tool, columns, text, expected] : cases) {
        TextToDataTableParser parser;
        AddTextColumns(parser, columns);
        EXPECT_EQ(Shown(parser, text), expected) << tool;
    }
}

TEST(TextFields, SeparatorsAndQuotes) {
    TextToDataTableParser colons;
    colons.AddField<std::string>("name", new CharSeparatedField(':'), 0);
    colons.AddField<std::string>("value", new NullSeparatedField, 0);
    EXPECT_EQ(
        Shown(colons,  // ipconfig /all, sc query
              "   IPv4 Address. . . . . . . . . . . : 192.168.1.5(Preferred)\r\n"
              "   Physical Address. . . . . . . . . : 00-11\r\n        STATE              : 4  RUNNING\r\n"),
        "{name=IPv4 Address. . . . . . . . . . ., value=192.168.1.5(Preferred)}"
        "{name=Physical Address. . . . . . . . ., value=00-11}{name=STATE, value=4  RUNNING}");

    TextToDataTableParser quoted;  // tasklist /fo csv /nh
    for (const char* const name : {"1", "2", "3"}) quoted.AddField<std::string>(name, new QuotedField, 0);
    EXPECT_EQ(
        Shown(quoted,
              "\"a.exe\",\"12\",\"1,234 K\"\r\n\"say \"\"x\"\"\", plain ,\"\"\n\"open, no end\n,,last\n"),
        "{1=a.exe, 2=12, 3=1,234 K}{1=say \"x\", 2=plain}{1=open, no end}{3=last}");
}

TEST(TextFields, NumbersAndTimesHaveTypes) {
    TextToDataTableParser parser;
    parser.AddField<double>("load", new CharSeparatedField(','), 2);
    parser.AddField<TimePoint>("time", new CharSeparatedField(','), 0);
    DataTable table;
    parser.Parse("0.75,1970-01-01 00:00:01\n-1e3,yesterday\nabc,\n+.5\n+-5\ninfo,\n-1e400,\n1e-400,\n-inf,\n",
                 table);
    std::ostringstream shown;
    for (const VariantList& row : table) shown << row;
    EXPECT_EQ(shown.str(),
              "{load=1.5, time=1970-01-01T00:00:01.000Z}{load=-2000}{load=0}{load=1}{load=0}"
              "{load=0}{load=-inf}{load=0}{load=-inf}");
    EXPECT_EQ(table.begin()->Get("load").GetDoubleValue(), 1.5);
    EXPECT_EQ(table.begin()->Get("time").GetTimePoint(), TimePoint() + std::chrono::seconds(1));
}

}  // namespace
}  // namespace quillon::test
