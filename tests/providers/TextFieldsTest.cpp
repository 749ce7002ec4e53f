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
    const struct {
        const char* tool;
        std::vector<std::string> names;
        std::string text, expected;
    } cases[] = {
        {"ps -eo pid,ppid,args",
         {"pid", "ppid", "args"},
         "    1     0 /sbin/init splash\n    4     2 [kworker/R-rcu_gp]\n12154 12150 bash -c sleep 1; ps\n",
         "{pid=1, ppid=0, args=/sbin/init splash}{pid=4, ppid=2, args=[kworker/R-rcu_gp]}"
         "{pid=12154, ppid=12150, args=bash -c sleep 1; ps}"},
        {"ps aux",
         {"user", "pid", "cpu", "mem", "vsz", "rss", "tty", "stat", "start", "time", "command"},
         "root         2  0.0  0.0      0     0 ?        S    17:58   0:00 [kthreadd]\n"
         "root     12353 46.9  0.4 146188 118220 ?       Rl   21:34   0:00 /usr/lib/gcc/cc1plus -quiet -I "
         ".\n",
         "{user=root, pid=2, cpu=0.0, mem=0.0, vsz=0, rss=0, tty=?, stat=S, start=17:58, time=0:00, "
         "command=[kthreadd]}{user=root, pid=12353, cpu=46.9, mem=0.4, vsz=146188, rss=118220, tty=?, "
         "stat=Rl, start=21:34, time=0:00, command=/usr/lib/gcc/cc1plus -quiet -I .}"},
        {"df -k",
         {"device", "blocks", "used", "free", "use", "place"},
         "devtmpfs                 12334492        0  12334492   0% /dev\n"
         "/dev/vda                264212084 31433592  68903596  32% /\n"
         "tmpfs                 16     0        16   0% /mnt/m n\n",
         "{device=devtmpfs, blocks=12334492, used=0, free=12334492, use=0%, place=/dev}"
         "{device=/dev/vda, blocks=264212084, used=31433592, free=68903596, use=32%, place=/}"
         "{device=tmpfs, blocks=16, used=0, free=16, use=0%, place=/mnt/m n}"},
        {"ls -l",
         {"mode", "links", "owner", "group", "size", "month", "day", "time", "name"},
         "drwxr-xr-x 2 root     root      4096 Jun 28  2023 ODBCDataSources\n"
         "-rw-r--r-- 1 root root 42 Nov 25 21:35 a b.txt\n"
         "lrwxrwxrwx  1 root root    21 Jun 17  2022 /usr/bin/awk -> /etc/alternatives/awk\n",
         "{mode=drwxr-xr-x, links=2, owner=root, group=root, size=4096, month=Jun, day=28, time=2023, "
         "name=ODBCDataSources}{mode=-rw-r--r--, links=1, owner=root, group=root, size=42, month=Nov, "
         "day=25, time=21:35, name=a b.txt}{mode=lrwxrwxrwx, links=1, owner=root, group=root, size=21, "
         "month=Jun, day=17, time=2022, name=/usr/bin/awk -> /etc/alternatives/awk}"},
        {"ss -tan",
         {"state", "recv", "send", "local", "peer"},
         "LISTEN 0      128        127.0.0.1:49697      0.0.0.0:*           \n"
         "ESTAB  0      0          127.0.0.1:42664    127.0.0.1:49697       \n",
         "{state=LISTEN, recv=0, send=128, local=127.0.0.1:49697, peer=0.0.0.0:*}"
         "{state=ESTAB, recv=0, send=0, local=127.0.0.1:42664, peer=127.0.0.1:49697}"},
        {"mount",
         {"device", "on", "place", "type", "kind", "options"},
         "proc on /proc type proc (rw,relatime)\n"
         "devtmpfs on /dev type devtmpfs (rw,relatime,size=12334492k,nr_inodes=3083623,mode=755)\n",
         "{device=proc, on=on, place=/proc, type=type, kind=proc, options=(rw,relatime)}{device=devtmpfs, "
         "on=on, place=/dev, type=type, kind=devtmpfs, "
         "options=(rw,relatime,size=12334492k,nr_inodes=3083623,mode=755)}"},
        {"ip addr",
         {"key", "value", "rest"},
         "1: lo: <LOOPBACK,UP,LOWER_UP> mtu 65536 qdisc noqueue state UNKNOWN group default qlen 1000\n"
         "    link/loopback 00:00:00:00:00:00 brd 00:00:00:00:00:00\n    inet6 ::1/128 scope host \n",
         "{key=1:, value=lo:, rest=<LOOPBACK,UP,LOWER_UP> mtu 65536 qdisc noqueue state UNKNOWN group "
         "default qlen 1000}{key=link/loopback, value=00:00:00:00:00:00, rest=brd 00:00:00:00:00:00}"
         "{key=inet6, value=::1/128, rest=scope host}"},
        {"ip -o addr",
         {"index", "name", "family", "address", "rest"},
         "1: lo    inet 127.0.0.1/8 scope host lo\\       valid_lft forever preferred_lft forever\n"
         "4: eth0    inet6 fe80::fc:ff:fe00:1/64 scope link \\       valid_lft forever preferred_lft "
         "forever\n",
         "{index=1:, name=lo, family=inet, address=127.0.0.1/8, rest=scope host lo\\       valid_lft forever "
         "preferred_lft forever}{index=4:, name=eth0, family=inet6, address=fe80::fc:ff:fe00:1/64, "
         "rest=scope link \\       valid_lft forever preferred_lft forever}"},
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
        {"systemctl list-unit-files",
         ReadTextHeading("UNIT FILE                              STATE    PRESET", 2),
         "proc-sys-fs-binfmt_misc.automount      static   -\n"
         "proc-sys-fs-binfmt_misc.mount          disabled disabled\n",
         "{UNIT FILE=proc-sys-fs-binfmt_misc.automount, STATE=static, PRESET=-}"
         "{UNIT FILE=proc-sys-fs-binfmt_misc.mount, STATE=disabled, PRESET=disabled}"},
        {"dpkg -l", ReadTextHeading("||/ Name           Version         Architecture Description"),
         "ii  bash           5.2.15-2+b8     amd64        GNU Bourne Again SHell\n"
         "ii  libc6:amd64    2.36-9+deb12u14 amd64        GNU C Library: Shared libraries\n",
         "{||/=ii, Name=bash, Version=5.2.15-2+b8, Architecture=amd64, Description=GNU Bourne Again SHell}"
         "{||/=ii, Name=libc6:amd64, Version=2.36-9+deb12u14, Architecture=amd64, Description=GNU C Library: "
         "Shared libraries}"},
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
