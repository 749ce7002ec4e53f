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

TEST(TextFields, ReadColumnsBetweenBlanks) {
    const struct {
        const char* tool;
        std::vector<std::string> names;
        std::string text, expected;
    } cases[] = {
        {"ps -eo pid,ppid,args",
         {"pid", "ppid", "args"},
         "      1       0 /sbin/init splash\n  12345       1 /usr/sbin/cron -f\n1234567 12345 "
         "[kworker/0:1]\n",
         "{pid=1, ppid=0, args=/sbin/init splash}{pid=12345, ppid=1, args=/usr/sbin/cron -f}"
         "{pid=1234567, ppid=12345, args=[kworker/0:1]}"},
        {"df -k",
         {"device", "blocks", "used", "free", "use", "place"},
         "/dev/vda1       20466256 5821308  13577996  31% /\n"
         "tmpfs                 16       0        16   0% /mnt/a b\n",
         "{device=/dev/vda1, blocks=20466256, used=5821308, free=13577996, use=31%, place=/}"
         "{device=tmpfs, blocks=16, used=0, free=16, use=0%, place=/mnt/a b}"},
        {"ls -l",
         {"mode", "links", "owner", "group", "size", "date", "time", "name"},
         "-rw-r--r--  1 root root     42 2026-11-25 18:03 a b.txt\n"
         "drwxr-xr-x 12 mary users 40960 2026-01-02 03:04 home\n",
         "{mode=-rw-r--r--, links=1, owner=root, group=root, size=42, date=2026-11-25, time=18:03, name=a "
         "b.txt}"
         "{mode=drwxr-xr-x, links=12, owner=mary, group=users, size=40960, date=2026-01-02, time=03:04, "
         "name=home}"},
        {"ss -tan",
         {"state", "recv", "send", "local", "peer"},
         "LISTEN    0      128          0.0.0.0:22        0.0.0.0:*    \n"
         "ESTAB     0      0      192.168.1.5:22    192.168.1.9:50022\n",
         "{state=LISTEN, recv=0, send=128, local=0.0.0.0:22, peer=0.0.0.0:*}"
         "{state=ESTAB, recv=0, send=0, local=192.168.1.5:22, peer=192.168.1.9:50022}"},
        {"mount",
         {"device", "on", "place", "type", "kind", "options"},
         "proc on /proc type proc (rw,nosuid)\n",
         "{device=proc, on=on, place=/proc, type=type, kind=proc, options=(rw,nosuid)}"},
        {"ip -o addr",
         {"index", "name", "family", "address", "rest"},
         "1: lo    inet 127.0.0.1/8 scope host lo\\       valid_lft forever\n2: eth0    inet6 fe80::1/64 "
         "scope link\n",
         "{index=1:, name=lo, family=inet, address=127.0.0.1/8, rest=scope host lo\\       valid_lft forever}"
         "{index=2:, name=eth0, family=inet6, address=fe80::1/64, rest=scope link}"},
        {"netstat -ano",
         {"protocol", "local", "foreign", "state", "pid"},
         "  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       948\r\n"
         "  TCP    [::]:445               [::]:0                 LISTENING       4\r\n",
         "{protocol=TCP, local=0.0.0.0:135, foreign=0.0.0.0:0, state=LISTENING, pid=948}"
         "{protocol=TCP, local=[::]:445, foreign=[::]:0, state=LISTENING, pid=4}"},
        {"tabs", {"a", "b"}, "\t1\t 2  3\n", "{a=1, b=2  3}"},
    };
    for (const auto& [tool, names, text, expected] : cases) {
        TextToDataTableParser parser;
        AddBlankColumns(parser, names);
        EXPECT_EQ(Shown(parser, text), expected) << tool;
    }
}

TEST(TextFields, AHeadingGivesColumnsThatMayBeEmptyOrHoldBlanks) {
    const struct {
        const char* tool;
        std::vector<TextColumn> columns;
        std::string text, expected;
    } cases[] = {
        {"systemctl list-units", ReadTextHeading("  UNIT         LOAD   ACTIVE DESCRIPTION\r"),
         "  cron.service loaded active Regular background jobs\r\n* x.mount      not-fo        "
         "\xC3\xA9t\xC3\xA9\n",
         "{UNIT=cron.service, LOAD=loaded, ACTIVE=active, DESCRIPTION=Regular background jobs}"
         "{UNIT=* x.mount, LOAD=not-fo, DESCRIPTION=\xC3\xA9t\xC3\xA9}"},
        {"dpkg -l", ReadTextHeading("||/ Name       Version      Architecture Description"),
         "ii  bash       5.2.15-2+b7  amd64        GNU Bourne Again SHell\n",
         "{||/=ii, Name=bash, Version=5.2.15-2+b7, Architecture=amd64, Description=GNU Bourne Again SHell}"},
        {"netstat -ano",
         ReadTextHeading("  Proto  Local Address          Foreign Address        State           PID", 2),
         "  UDP    0.0.0.0:123            *:*                                    1044\r\n",
         "{Proto=UDP, Local Address=0.0.0.0:123, Foreign Address=*:*, PID=1044}"},
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
    parser.Parse("0.75,1970-01-01 00:00:01\n-1e3,yesterday\nabc,\n+.5\n", table);
    std::ostringstream shown;
    for (const VariantList& row : table) shown << row;
    EXPECT_EQ(shown.str(), "{load=1.5, time=1970-01-01T00:00:01.000Z}{load=-2000}{load=0}{load=1}");
    EXPECT_EQ(table.begin()->Get("load").GetDoubleValue(), 1.5);
    EXPECT_EQ(table.begin()->Get("time").GetTimePoint(), TimePoint() + std::chrono::seconds(1));
}

}  // namespace
}  // namespace quillon::test
