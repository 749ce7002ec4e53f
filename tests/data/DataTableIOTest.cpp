#include "quillon/DataTableIO.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "support/Split.h"

namespace quillon {
namespace {

using testing::StartsWith;
using testing::ThrowsMessage;

constexpr char kReplacement[] = "\xEF\xBF\xBD";
constexpr long long kMax = std::numeric_limits<long long>::max(), kMin = -kMax - 1;

DataTable OneCell(const Variant& cell) { return DataTable(VariantList(cell)); }

TEST(DataTableIO, WritesEveryKindInEveryForm) {
    const std::string invalid =
        "\xFF"
        "a\xC3(\xED\xA0\x80";
    const std::string r = kReplacement, repaired = r + "a" + r + "(" + r + r + r;
    const struct {
        Variant cell;
        std::string json, csv;
    } cases[] = {
        {Variant::NullVariant("n"), "null", ""},
        {Variant("n", ""), R"("")", R"("")"},
        {Variant("n", kMin), "-9223372036854775808", "-9223372036854775808"},
        {Variant("n", kMax), "9223372036854775807", "9223372036854775807"},
        {Variant("n", true), "true", "true"},
        {Variant("n", 3.0), "3.0", "3.0"},
        {Variant("n", -0.0), "-0.0", "-0.0"},
        {Variant("n", 0.1), "0.1", "0.1"},
        {Variant("n", 1e300), "1e+300", "1e+300"},
        {Variant("n", -std::numeric_limits<double>::infinity()), "null", "-inf"},
        {Variant("n", TimePoint()), R"("1970-01-01T00:00:00.000Z")", "1970-01-01T00:00:00.000Z"},
        {Variant("n", "a,b"), R"("a,b")", R"("a,b")"},
        {Variant("n", "\"q\"\\\r\n\t\x01"), R"("\"q\"\\\r\n\t\u0001")", "\"\"\"q\"\"\\\r\n\t\x01\""},
        {Variant("n", std::string("a\0b", 3)), R"("a\u0000b")", std::string("a\0b", 3)},
        {Variant("n", invalid), '"' + repaired + '"', repaired},
    };
    for (const auto& [cell, json, csv] : cases) {
        SCOPED_TRACE(json);
        EXPECT_EQ(ToJson(OneCell(cell)), "[{\"n\":" + json + "}]");
        EXPECT_EQ(ToJsonLines(OneCell(cell)), "{\"n\":" + json + "}\n");
        EXPECT_EQ(ToCsv(OneCell(cell)), "n\r\n" + csv + "\r\n");
    }
    EXPECT_EQ(ToText(OneCell(Variant("n", invalid))), "n\n-------\n" + repaired + "\n");
    EXPECT_EQ(ToJson(OneCell(Variant("\xFF\"", 1))), "[{\"" + r + "\\\"\":1}]");
}

TEST(DataTableIO, TextIsAlignedByCharacterAndEscaped) {
    const DataTable table(
        VariantList(Variant("name", "caf\xC3\xA9"), Variant("size", 12345),
                    Variant("note", "line\r\nend\x1B[2J")),
        VariantList(Variant("size", 7), Variant("name", "tea"), Variant::NullVariant("note")),
        VariantList(Variant("name", "\xC2\x9B\xF0\x9F\x8D\xB5"), Variant("ratio", 0.5),
                    Variant("size", "none")),
        VariantList(Variant("note", "C:\\a\\tmp \xE2\x80\xAEgpj")));
    EXPECT_EQ((std::ostringstream() << table).str(),
              "name     size   note                  ratio\n"
              "-------  -----  --------------------  -----\n"
              "caf\xC3\xA9     12345  line\\r\\nend\\u001B[2J\n"
              "tea          7\n"
              "\\u009B\xF0\x9F\x8D\xB5  none                           0.5\n"
              "                C:\\a\\\\tmp \\u202Egpj\n");
}

TEST(DataTableIO, MarkdownShowsCellsAsTheyAre) {
    const DataTable table(
        VariantList(Variant("__name__", "![x](http://a.example/b_c)"), Variant("size", 12345)),
        VariantList(Variant("size", 0.5), Variant::NullVariant("__name__"),
                    Variant("note", "*.log|<b>\r\n\x1B\xFF")));
    EXPECT_EQ(ToMarkdown(table),
              "| \\_\\_name\\_\\_ | size | note |\n"
              "| --- | --- | --- |\n"
              "| !\\[x\\](<http://a.example/b_c>) | 12345 |  |\n"
              "|  | 0.5 | \\*.log\\|\\<b\\><br>\\x1B\xEF\xBF\xBD |\n");
    EXPECT_EQ(ToMarkdown({}), "");
}

TEST(DataTableIO, TakesEveryColumnOnceInOrderOfAppearance) {
    DataTable table(VariantList(Variant("b", 1), Variant("b", 2)),
                    VariantList(Variant("c", 3), Variant("b", 4), Variant("a", 5)));
    EXPECT_EQ(ToJson(table), R"([{"b":1,"c":null,"a":null},{"b":4,"c":3,"a":5}])");
    table.SetDefaultColumnNames({"a", "empty", "a"});
    EXPECT_EQ(ToCsv(table), "a,empty,b,c\r\n,,1,\r\n5,,4,3\r\n");
    EXPECT_EQ(ToJson({}), "[]");
    EXPECT_EQ(ToJsonLines({}) + ToCsv({}) + ToText({}), "");
}

TEST(DataTableIO, ReadsJson) {
    const std::pair<const char*, Variant> cases[] = {
        {R"([{"n":9223372036854775807}])", Variant("n", kMax)},
        {R"([{"n":-9223372036854775808}])", Variant("n", kMin)},
        {R"([{"n":9223372036854775808}])", Variant("n", 9223372036854775808.0)},
        {R"([{"n":18446744073709551616}])", Variant("n", 18446744073709551616.0)},
        {R"([{"n":1.0}])", Variant("n", 1.0)},
        {R"([{"n":null}])", Variant::NullVariant("n")},
        {R"({"n":"\u00e9\ud83c\udf75\u0000"})", Variant("n", std::string("\xC3\xA9\xF0\x9F\x8D\xB5\0", 7))},
        {"\xEF\xBB\xBF [{\"n\" : false}] ", Variant("n", false)},
        {R"([{"n":[1.50, {"a":[],"b":"\"\n","c":{}}, [null,true,-1]]}])",
         Variant("n", R"([1.50,{"a":[],"b":"\"\n","c":{}},[null,true,-1]])")},
        {"\n{\"n\":\"\xFF\"}\r\n\n", Variant("n", kReplacement)},
        {" {\n  \"n\":\n 1\n}\n", Variant("n", 1)},
        {"[{\"n\":-0}]", Variant("n", -0.0)},
        {"[{\"n\":-1e-999}]", Variant("n", -0.0)},
        {"[{\"n\":5e-324}]", Variant("n", 5e-324)},
    };
    for (const auto& [json, cell] : cases)
        EXPECT_TRUE(FromJson(json).ContentEqual(OneCell(cell))) << json << ToJson(FromJson(json));
    EXPECT_TRUE(FromJson(" [ ] ").IsUndefined() && FromJson("").IsUndefined());
    EXPECT_EQ(FromJson("[{}]").GetNumberOfRows(), 1u);
}

TEST(DataTableIO, ReadsCsv) {
    const Variant null = Variant::NullVariant("n");
    const std::pair<const char*, VariantList> cases[] = {
        {"n\r\n5\r\n", VariantList(Variant("n", "5"))},
        {"n\n5", VariantList(Variant("n", "5"))},
        {"\xEF\xBB\xBFn\n\"\"", VariantList(Variant("n", ""))},
        {"n\n\n", VariantList(null)},
        {"n,m\n,", VariantList(null, Variant::NullVariant("m"))},
        {"n,m\r\n\"a,\"\"b\r\nc\",\xFF\r\n",
         VariantList(Variant("n", "a,\"b\r\nc"), Variant("m", kReplacement))},
        {"\"n\",n\r a b ,\"x\"\r", VariantList(Variant("n", " a b "), Variant("n", "x"))},
    };
    for (const auto& [csv, row] : cases)
        EXPECT_TRUE(FromCsv(csv).ContentEqual(DataTable(row))) << csv << FromCsv(csv);
    EXPECT_TRUE(FromCsv("").IsUndefined());
    EXPECT_THAT(FromCsv("a,b").GetDefaultColumnNames(), testing::ElementsAre("a", "b"));
}

TEST(DataTableIO, RefusesWhatIsHostileOrMalformed) {
    const auto nested = [](std::size_t depth) {
        return "[{\"n\":" + std::string(depth, '[') + std::string(depth, ']') + "}]";
    };
    EXPECT_EQ(FromJson(nested(64)).begin()->Get("n").GetStringValue().size(), 128u);
    const struct {
        DataTable (*read)(std::string_view);
        std::string text, message;
    } cases[] = {
        {FromJson, nested(65), "row 1, line 1, column 71: values are nested too deep"},
        {FromJson, "[{}," + nested(1'000'000).substr(1),
         "row 2, line 1, column 74: values are nested too deep"},
        {FromJson, std::string(1'000'000, '['), "row 1, line 1, column 2: not an object"},
        {FromJson, "[{},5]", "row 2, line 1, column 5: not an object"},
        {FromJson, "{\"a\":1}\n\"text\"", "row 2, line 2, column 1: not an object"},
        {FromJson, "{\"a\":1} {\"a\":2}", "row 2, line 1, column 9: expected a line end"},
        {FromJson, "{\"a\":1}\r\n{\"\xC3\xA9\xFF\" 1}", "row 2, line 2, column 7: expected ':'"},
        {FromJson, std::string("[{\"a\":1}]\0", 10), "row 2, line 1, column 10: text after the end"},
        {FromJson, "\xFF\xFE[", "row 1, line 1, column 1: the text is UTF-16, not UTF-8"},
        {FromCsv, "a,b\n1\n", "record 2, line 2, column 1: 1 fields instead of 2"},
        {FromCsv, "a\n1,2,3\n", "record 2, line 2, column 1: 3 fields instead of 1"},
        {FromCsv, "\"a\n\"\n\"open\n\n", "record 2, line 3, column 1: a quote is not closed"},
        {FromCsv, "a\n\"x\"y\n", "record 2, line 2, column 4: text after a closing quote"},
        {FromCsv, "a\rb\"c\"\n", "record 2, line 2, column 2: a quote inside an unquoted field"},
        {FromCsv, "\xFE\xFF", "record 1, line 1, column 1: the text is UTF-16, not UTF-8"},
    };
    for (const auto& c : cases)
        EXPECT_THAT([&c] { (void)c.read(c.text); }, ThrowsMessage<TableFormatError>(c.message)) << c.text;
    for (const std::string& json : test::Split("[ [{\"a\":}] [{\"a\":1} [{}]x [{\"a\":01}] "
                                               "[{\"a\":1e999}] {\"a\":\" [{\"a\":\"\\ud800\"}] nul "
                                               "[{\"a\":NaN}] [{\"a\":1.}] [{\"a\":0.5e999}] [{\"a\":-}] "
                                               "[{\"a\":+1}] [{\"a\":\"\\x\"}] [{\"a\":\"\\u12g4\"}] "
                                               "[{\"a\":\"\n\"}] [{\"a\":[1,]}] [{\"a\":{\"b\":}}] "
                                               "[{\"a\":[1}] [{a:1}] [{\"a\":[1e999]}]"))
        EXPECT_THAT([&json] { (void)FromJson(json); }, ThrowsMessage<TableFormatError>(StartsWith("row ")))
            << json;
}

TEST(DataTableIO, ErrorsTellTheirPlaceAsMembers) {
    try {
        (void)FromJson("\xEF\xBB\xBF[{\"\xC3\xA9\":1},\r\n {\"\xFF\":}]");
        FAIL();
    } catch (const TableFormatError& error) {
        EXPECT_EQ(error.Place().record, 2u);
        EXPECT_EQ(error.Place().line, 2u);
        EXPECT_EQ(error.Place().column, 7u);
        EXPECT_EQ(error.Place().byte, 22u);
        EXPECT_EQ(error.Reason(), "expected a value");
        EXPECT_STREQ(error.what(), "row 2, line 2, column 7: expected a value");
    }
}

TEST(DataTableIO, CsvTakesAnotherSeparatorAndTypes) {
    CsvOptions options;
    options.separator = ';';
    options.types = {{"id", 0}, {"ratio", 0.0}, {"flag", false}};
    options.skipTrailingBlankLines = true;
    const DataTable table = FromCsv("id;ratio;flag;text\n5;1.5;true;a,b\n;;;\r\n \n\r\r\n", options);
    const VariantList expected = {{"id", 5}, {"ratio", 1.5}, {"flag", true}, {"text", "a,b"}};
    EXPECT_EQ(table.GetRow(0), expected);
    EXPECT_EQ(table.GetNumberOfRows(), 2u);
    EXPECT_TRUE(table.GetRow(1)["id"].IsNull());
    EXPECT_EQ(ToCsv(table, options), "id;ratio;flag;text\r\n5;1.5;true;a,b\r\n;;;\r\n");
    const std::pair<const char*, const char*> faults[] = {
        {"id\n5x", "record 2, line 2, column 1: not an integer in column 'id'"},
        {"text;ratio\na;1,5", "record 2, line 2, column 3: not a number in column 'ratio'"},
        {"ratio\n1e-400\n1e400\n", "record 3, line 3, column 1: not a number in column 'ratio'"},
        {"flag\nyes", "record 2, line 2, column 1: not a boolean in column 'flag'"},
    };
    for (const auto& [csv, message] : faults) {
        const auto read = [&options, text = csv] { (void)FromCsv(text, options); };
        EXPECT_THAT(read, ThrowsMessage<TableFormatError>(message));
    }
    options.separator = '"';
    EXPECT_THROW((void)ToCsv(table, options), std::invalid_argument);
}

TEST(DataTableIO, CsvKeepsRowsOfBlanksAtTheEnd) {
    CsvOptions options;
    options.separator = '\t';
    options.skipTrailingBlankLines = true;
    for (const VariantList& row : {VariantList{{"a", " "}}, VariantList{{"a", "  "}, {"b", ""}}}) {
        const DataTable table(row);
        EXPECT_EQ(FromCsv(ToCsv(table, options), options), table);
    }
}

TEST(DataTableIO, CsvForSpreadsheetsHoldsNoFormula) {
    const DataTable table(VariantList{{"=n", "=1+1"}, {"b", -5}, {"c", "-5"}, {"d", "a=b"}, {"e", "\tx"}});
    CsvOptions options;
    options.formulaSafe = true;
    EXPECT_EQ(ToCsv(table, options), "\"'=n\",b,c,d,e\r\n\"'=1+1\",-5,\"'-5\",a=b,\"'\tx\"\r\n");
}

TEST(DataTableIO, TextIsCutToAWidth) {
    const DataTable table(VariantList{{"id", 1}, {"text", std::string(30, 'x') + "\xC3\xA9"}, {"n", 5}},
                          VariantList{{"id", 2}, {"text", "short"}, {"n", 60}});
    TextOptions options;
    options.maxWidth = 20;
    EXPECT_EQ(ToText(table, options),
              "id  text           n\n"
              "--  ------------  --\n"
              " 1  xxxxxxxxxxx\xE2\x80\xA6   5\n"
              " 2  short         60\n");
    options.maxWidth = 10;
    options.ellipsis = "...";
    EXPECT_EQ(ToText(table, options),
              "id  tex...\n"
              "--  ---...\n"
              " 1  xxx...\n"
              " 2  sho...\n");
}

TEST(DataTableIO, OneLongCellDoesNotPadTheOthers) {
    DataTable table(VariantList{{"text", std::string(1'000'000, 'x')}, {"n", 1}});
    for (int i = 0; i < 1000; ++i) table.AddRow({{"text", "y"}, {"n", i}});
    EXPECT_LT(ToText(table).size(), 1'400'000u);
}

TEST(DataTableIO, RaggedTablesTakeSections) {
    DataTable table;
    std::string expected;
    for (int i = 100; i < 140; ++i) {
        const std::string number = std::to_string(i), name = "n" + number;
        table.AddRow({{"z", "long"}, {name, i}});
        table.AddRow(VariantList());
        table.AddRow({{name, "x"}, {"z", "a"}});
        expected += (i == 100 ? "" : "\n") + std::string("z     ") + name + "\n----  ----\nlong   " + number +
                    "\n\na     x\n";
    }
    EXPECT_EQ(ToText(table), expected);
    TextOptions narrow;
    narrow.maxWidth = 9;
    EXPECT_THAT(ToText(table, narrow), StartsWith("z     n1\xE2\x80\xA6\n----  --\xE2\x80\xA6\n"));

    table.Clear(true);
    for (int i = 0; i < 30'000; ++i) table.AddRow({{"column " + std::to_string(i), i}});
    EXPECT_LT(ToText(table).size(), 1'500'000u);
}

TEST(DataTableIO, RepairedNamesStayApart) {
    const DataTable table(VariantList{{"\xFF", 1}, {"\xFE", 2}, {"\xEF\xBF\xBD", 3}});
    const std::string r = kReplacement;
    EXPECT_EQ(ToCsv(table), r + "2," + r + "3," + r + "\r\n1,2,3\r\n");
}

/// Counts what a stream gets, and fails after `limit` writes.
class CountingBuffer : public std::streambuf {
public:
    explicit CountingBuffer(int limit) : m_left(limit) {}
    std::string text;
    std::streamsize longest = 0;

protected:
    std::streamsize xsputn(const char* data, std::streamsize size) override {
        if (m_left-- <= 0) return 0;
        longest = std::max(longest, size);
        text.append(data, static_cast<std::size_t>(size));
        return size;
    }

private:
    int m_left;
};

TEST(DataTableIO, StreamsEveryFormRowByRow) {
    DataTable table;
    for (int i = 0; i < 1000; ++i) table.AddRow({{"a", i}, {"b", "text"}});
    const struct {
        void (*write)(std::ostream&, const DataTable&);
        std::string expected;
    } cases[] = {
        {WriteJson, ToJson(table)},
        {WriteJsonLines, ToJsonLines(table)},
        {[](std::ostream& stream, const DataTable& t) { WriteCsv(stream, t); }, ToCsv(table)},
        {[](std::ostream& stream, const DataTable& t) { WriteText(stream, t); }, ToText(table)},
        {WriteMarkdown, ToMarkdown(table)},
    };
    for (const auto& c : cases) {
        CountingBuffer whole(100'000), failing(10);
        std::ostream stream(&whole), failed(&failing);
        c.write(stream, table);
        EXPECT_EQ(whole.text, c.expected);
        EXPECT_LT(whole.longest, 64);
        c.write(failed, table);
        EXPECT_TRUE(failed.bad());
        EXPECT_EQ(failing.text, c.expected.substr(0, failing.text.size()));
    }
}

}  // namespace
}  // namespace quillon
