#include "quillon/DataTableIO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace quillon {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

DataTable OneCell(const Variant& cell) { return DataTable(VariantList(cell)); }

std::string ErrorOf(DataTable (*read)(std::string_view), const std::string& text) {
    try {
        read(text);
    } catch (const TableFormatError& error) {
        return error.what();
    }
    return "no error";
}

TEST(DataTableIO, WritesEveryKindInEveryForm) {
    const std::string invalid =
        "\xFF"
        "a\xC3(\xED\xA0\x80";
    const std::string r = kReplacement, repaired = r + "a" + r + "(" + r + r + r;
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        Variant cell;
        std::string json, csv;
    } cases[] = {
        {Variant::NullVariant("n"), "null", ""},
        {Variant("n", ""), R"("")", R"("")"},
        {Variant("n", std::numeric_limits<long long>::min()), "-9223372036854775808", "-9223372036854775808"},
        {Variant("n", std::numeric_limits<long long>::max()), "9223372036854775807", "9223372036854775807"},
        {Variant("n", true), "true", "true"},
        {Variant("n", 3.0), "3.0", "3.0"},
        {Variant("n", -0.0), "-0.0", "-0.0"},
        {Variant("n", 0.1), "0.1", "0.1"},
        {Variant("n", 1e300), "1e+300", "1e+300"},
        {Variant("n", -infinity), "null", "-inf"},
        {Variant("n", TimePoint()), R"("1970-01-01T00:00:00.000Z")", "1970-01-01T00:00:00.000Z"},
        {Variant("n", "a,b"), R"("a,b")", R"("a,b")"},
        {Variant("n", "\"q\"\\\r\n\t\x01"), R"("\"q\"\\\r\n\t\u0001")", "\"\"\"q\"\"\\\r\n\t\x01\""},
        {Variant("n", std::string("a\0b", 3)), R"("a\u0000b")", std::string("a\0b", 3)},
        {Variant("n", invalid), '"' + repaired + '"', repaired},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        const DataTable table = OneCell(c.cell);
        EXPECT_EQ(ToJson(table), "[{\"n\":" + c.json + "}]");
        EXPECT_EQ(ToJsonLines(table), "{\"n\":" + c.json + "}\n");
        EXPECT_EQ(ToCsv(table), "n\r\n" + c.csv + "\r\n");
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
                    Variant("size", "none")));
    std::ostringstream stream;
    stream << table;
    EXPECT_EQ(stream.str(),
              "name     size   note                  ratio\n"
              "-------  -----  --------------------  -----\n"
              "caf\xC3\xA9     12345  line\\r\\nend\\u001B[2J\n"
              "tea          7\n"
              "\\u009B\xF0\x9F\x8D\xB5  none                           0.5\n");
    EXPECT_EQ(ToText(DataTable()), "");
}

TEST(DataTableIO, TakesEveryColumnOnceInOrderOfAppearance) {
    DataTable table(VariantList(Variant("b", 1), Variant("b", 2)),
                    VariantList(Variant("c", 3), Variant("b", 4), Variant("a", 5)));
    EXPECT_EQ(ToJson(table), R"([{"b":1,"c":null,"a":null},{"b":4,"c":3,"a":5}])");
    table.SetDefaultColumnNames({"a", "empty", "a"});
    EXPECT_EQ(ToCsv(table), "a,empty,b,c\r\n,,1,\r\n5,,4,3\r\n");
    EXPECT_EQ(ToJson(DataTable()), "[]");
    EXPECT_EQ(ToJsonLines(DataTable()), "");
    EXPECT_EQ(ToCsv(DataTable()), "");
}

TEST(DataTableIO, ReadsJson) {
    const struct {
        const char* json;
        Variant cell;
    } cases[] = {
        {R"([{"n":9223372036854775807}])", Variant("n", std::numeric_limits<long long>::max())},
        {R"([{"n":-9223372036854775808}])", Variant("n", std::numeric_limits<long long>::min())},
        {R"([{"n":9223372036854775808}])", Variant("n", 9223372036854775808.0)},
        {R"([{"n":18446744073709551616}])", Variant("n", 18446744073709551616.0)},
        {R"([{"n":1.0}])", Variant("n", 1.0)},
        {R"([{"n":null}])", Variant::NullVariant("n")},
        {R"({"n":"\u00e9\ud83c\udf75\u0000"})", Variant("n", std::string("\xC3\xA9\xF0\x9F\x8D\xB5\0", 7))},
        {"\xEF\xBB\xBF [{\"n\" : false}] ", Variant("n", false)},
        {R"([{"n":[1.50, {"a":[],"b":"\"\n","c":{}}, [null,true,-1]]}])",
         Variant("n", R"([1.50,{"a":[],"b":"\"\n","c":{}},[null,true,-1]])")},
        {"\n{\"n\":\"\xFF\"}\r\n\n", Variant("n", kReplacement)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        EXPECT_TRUE(FromJson(c.json).ContentEqual(OneCell(c.cell))) << ToJson(FromJson(c.json));
    }
    EXPECT_EQ(FromJson("{\"a\":1}\n{\"b\":2}").GetNumberOfRows(), 2u);
    EXPECT_TRUE(FromJson(" [ ] ").IsUndefined() && FromJson("").IsUndefined());
    EXPECT_EQ(FromJson("[{}]").GetNumberOfRows(), 1u);
}

TEST(DataTableIO, RefusesHostileJson) {
    const auto nested = [](std::size_t depth) {
        return "[{\"n\":" + std::string(depth, '[') + std::string(depth, ']') + "}]";
    };
    EXPECT_EQ(FromJson(nested(64)).begin()->Get("n").GetStringValue().size(), 128u);
    EXPECT_EQ(ErrorOf(FromJson, nested(65)), "JSON row 1: values are nested too deep");
    EXPECT_EQ(ErrorOf(FromJson, "[{}," + nested(1'000'000).substr(1)),
              "JSON row 2: values are nested too deep");
    EXPECT_EQ(ErrorOf(FromJson, std::string(1'000'000, '[')), "JSON row 1: not an object");
    EXPECT_EQ(ErrorOf(FromJson, "[{},5]"), "JSON row 2: not an object");
    EXPECT_EQ(ErrorOf(FromJson, "{\"a\":1}\n\"text\""), "JSON row 2: not an object");
    EXPECT_EQ(ErrorOf(FromJson, "{\"a\":1}\n{\"a\" 1}"), "JSON: cannot be read at byte 14");
    for (const char* json :
         {"[", "[{\"a\":}]", "[{\"a\":1}", "[{}]x", "[{\"a\":01}]", "[{\"a\":1e999}]", "{\"a\":\"",
          "[{\"a\":\"\\ud800\"}]", "nul", "{\"a\":\n1}", "[{\"a\":NaN}]", "[{},]"}) {
        EXPECT_THAT(ErrorOf(FromJson, json), ::testing::StartsWith("JSON: cannot be read at byte ")) << json;
    }
}

TEST(DataTableIO, ReadsCsv) {
    const Variant null = Variant::NullVariant("n");
    const struct {
        const char* csv;
        VariantList row;
    } cases[] = {
        {"n\r\n5\r\n", VariantList(Variant("n", "5"))},
        {"n\n5", VariantList(Variant("n", "5"))},
        {"\xEF\xBB\xBFn\n\"\"", VariantList(Variant("n", ""))},
        {"n\n\n", VariantList(null)},
        {"n,m\n,", VariantList(null, Variant::NullVariant("m"))},
        {"n,m\r\n\"a,\"\"b\r\nc\",\xFF\r\n",
         VariantList(Variant("n", "a,\"b\r\nc"), Variant("m", kReplacement))},
        {"\"n\",n\r\n a\rb ,\"x\"", VariantList(Variant("n", " a\rb "), Variant("n", "x"))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.csv);
        EXPECT_TRUE(FromCsv(c.csv).ContentEqual(DataTable(c.row))) << FromCsv(c.csv);
    }
    EXPECT_TRUE(FromCsv("").IsUndefined());
    EXPECT_THAT(FromCsv("a,b").GetDefaultColumnNames(), ::testing::ElementsAre("a", "b"));

    EXPECT_EQ(ErrorOf(FromCsv, "a,b\n1\n"), "CSV record 2: 1 fields instead of 2");
    EXPECT_EQ(ErrorOf(FromCsv, "a\n1,2\n"), "CSV record 2: 2 fields instead of 1");
    EXPECT_EQ(ErrorOf(FromCsv, "a\n\"open\n\n"), "CSV record 2: a quote is not closed");
    EXPECT_EQ(ErrorOf(FromCsv, "a\n\"x\"y\n"), "CSV record 2: text after a closing quote");
    EXPECT_EQ(ErrorOf(FromCsv, "a\nb\"c\"\n"), "CSV record 2: a quote inside an unquoted field");
}

TEST(DataTableIO, RoundTripsKeepWhatTheFormHolds) {
    const DataTable table(
        VariantList(Variant("text", "a\"\r\n,\xC3\xA9"), Variant("number", 1LL << 62),
                    Variant("real", 1.0 / 3), Variant("flag", false), Variant::NullVariant("none")),
        VariantList(Variant("text", ""), Variant("number", -1), Variant("real", 5e-324),
                    Variant("flag", true), Variant::NullVariant("none")));
    EXPECT_TRUE(FromJson(ToJson(table)) == table);
    EXPECT_TRUE(FromJson(ToJsonLines(table)) == table);
    const DataTable texts = FromCsv(ToCsv(table));
    EXPECT_TRUE(FromCsv(ToCsv(texts)) == texts);
    EXPECT_EQ(texts.begin()->Get("number"), Variant("number", "4611686018427387904"));
}

}  // namespace
}  // namespace quillon
