#include "quillon/TextToDataTableParser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "quillon/TextFields.h"

namespace quillon::test {
namespace {

using std::string_literals::operator""s;

/// Reads as its base does, but is a class of the caller's own.
class DerivedField final : public SpaceSeparatedField {
public:
    ~DerivedField() override { ++s_deletions; }
    bool Parse(const char** cursor, std::string& value) override {
        SpaceSeparatedField::Parse(cursor, value);
        if (value == "secret") value = " *** ";
        return false;  // which nobody asks
    }
    static inline int s_deletions = 0;
};

std::string Shown(const DataTable& table) {
    std::ostringstream text;
    for (const VariantList& row : table) text << row;
    return text.str();
}

template <class T>
std::string Parsed(const std::string& text, IParsableField* field, long long multiplier = 0) {
    TextToDataTableParser parser;
    parser.AddField<T>("v", field, multiplier);
    DataTable table;
    parser.Parse(text, table);
    return Shown(table);
}

TEST(TextToDataTableParser, CutsLinesIntoTrimmedFields) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"empty text", "", ""},
        {"spaces separate as one, the rest keeps its own", "a  b c  d ", "{1=a, 2=b, 3=c  d}"},
        {"leading spaces are an empty first field", "  a b", "{2=a, 3=b}"},
        {"lines without a value give no row", "\n \n\t\r\n\na\n", "{1=a}"},
        {"a line that ends early gives a short row", "a \nb c", "{1=a}{1=b, 2=c}"},
        {"white space that is no space is trimmed", "\ta\r b\v\f \tc\td\r\n", "{1=a, 2=b, 3=c\td}"},
        {"a zero ends its line only", "a b\0c d\n\0x\ne"s, "{1=a, 2=b}{1=e}"},
        {"fields and gaps of any length",
         std::string(33, 'a') + std::string(35, ' ') + "b   c" + std::string(40, ' '),
         "{1=" + std::string(33, 'a') + ", 2=b, 3=c}"},
        {"bytes past ASCII are text", "\xC3\xA9\xA0 \xFF", "{1=\xC3\xA9\xA0, 2=\xFF}"},
    };
    // With a field of the caller's own, lines are handed over in another way.
    for (const bool own : {false, true}) {
        TextToDataTableParser parser;
        parser.AddField<std::string>("1", own ? new DerivedField : new SpaceSeparatedField, 0);
        parser.AddField<std::string>("2", new SpaceSeparatedField, 0);
        parser.AddField<std::string>("3", new NullSeparatedField, 0);
        for (const auto& [what, text, expected] : cases) {
            DataTable table;
            parser.Parse(text, table);
            EXPECT_EQ(Shown(table), expected) << what;
            EXPECT_EQ(table.IsUndefined(), expected.empty()) << what;
        }
    }
}

TEST(TextToDataTableParser, ReadsIntegersAsTheCLibraryAndMultipliesWithoutOverflow) {
    const std::tuple<std::string, long long, std::string> cases[] = {
        {"12", 1024, "{v=12288}"},
        {"12\nabc\n+7x\n+-7\n-+7\n0x10\n-", 0, "{v=12}{v=0}{v=7}{v=0}{v=0}{v=0}{v=0}"},
        {"-7.9", -2, "{v=14}"},
        {"9223372036854775807\n99999999999999999999", 1, "{v=9223372036854775807}{v=9223372036854775807}"},
        {"-9223372036854775808\n-9223372036854775809", 1, "{v=-9223372036854775808}{v=-9223372036854775808}"},
        {"-9223372036854775808\n4611686018427387904", -1, "{v=9223372036854775807}{v=-4611686018427387904}"},
        {"4611686018427387904\n-4611686018427387904", 2, "{v=9223372036854775807}{v=-9223372036854775808}"},
        {"4611686018427387905", -2, "{v=-9223372036854775808}"},
    };
    for (const auto& [text, multiplier, expected] : cases)
        EXPECT_EQ(Parsed<long long>(text, new SpaceSeparatedField, multiplier), expected) << text;
}

TEST(TextToDataTableParser, OnlyOneAndTrueAreTrue) {
    const std::string text = "1\nTRUE\nTrue\r\n\n0\nyes\n01\ntrue.\ntrues\n";
    EXPECT_EQ(Parsed<bool>(text, new NullSeparatedField),
              "{v=true}{v=true}{v=true}{v=false}{v=false}{v=false}{v=false}{v=false}");
}

TEST(TextToDataTableParser, FieldsOfTheCallersOwnAreAskedAndDeletedOnce) {
    const int before = DerivedField::s_deletions;
    EXPECT_EQ(Parsed<std::string>("secret\nb\0c\nd\n"s, new DerivedField), "{v=***}{v=b}{v=d}");
    EXPECT_EQ(DerivedField::s_deletions, before + 1);
}

/// Has a value where a line has none.
class DefaultField final : public SpaceSeparatedField {
public:
    bool Parse(const char** cursor, std::string& value) override {
        if (**cursor == '\0') value = "none";
        return SpaceSeparatedField::Parse(cursor, value);
    }
};

TEST(TextToDataTableParser, AFieldOfTheCallersOwnIsAskedBehindTheEndOfALine) {
    TextToDataTableParser parser;
    parser.AddField<std::string>("a", new SpaceSeparatedField, 0);
    parser.AddField<std::string>("b", new SpaceSeparatedField, 0);
    parser.AddField<std::string>("c", new DefaultField, 0);
    parser.AddField<std::string>("d", new SpaceSeparatedField, 0);
    DataTable table;
    parser.Parse("1\n2 3 4 5\n", table);
    EXPECT_EQ(Shown(table), "{a=1, c=none}{a=2, b=3, c=4, d=5}");
}

TEST(TextToDataTableParser, AppendsToTheRowsThatAreThere) {
    TextToDataTableParser parser;
    EXPECT_THROW(parser.AddField<bool>("v", nullptr, 0), std::invalid_argument);
    parser.AddField<bool>("v", new SpaceSeparatedField, 0);
    DataTable table(VariantList(Variant("kept", "row")));
    parser.Parse("1", table);
    EXPECT_EQ(Shown(table), "{kept=row}{v=true}");
}

/// Does to the table, in the middle of a line, what no caller should.
class HostileField final : public SpaceSeparatedField {
public:
    explicit HostileField(DataTable& table) : m_table(table) {}
    bool Parse(const char** cursor, std::string& value) override {
        SpaceSeparatedField::Parse(cursor, value);
        if (value == "clear") m_table.Clear(false);
        if (value == "move") m_table = DataTable(m_table);
        if (value == "throw") throw std::runtime_error("thrown");
        return true;
    }

private:
    DataTable& m_table;
};

TEST(TextToDataTableParser, AFieldMayChangeTheTableOrThrow) {
    std::string lines;
    for (int i = 0; i < 2000; ++i) lines += "some text\n";
    DataTable table;
    TextToDataTableParser parser;
    parser.AddField<std::string>("1", new SpaceSeparatedField, 0);
    parser.AddField<std::string>("2", new HostileField(table), 0);
    parser.AddField<std::string>("3", new SpaceSeparatedField, 0);
    EXPECT_THROW(parser.Parse(lines + "a clear\n" + lines + "b move c\n" + lines + "d throw e\n", table),
                 std::runtime_error);
    ASSERT_EQ(table.GetNumberOfRows(), 4002u);
    EXPECT_EQ(Shown(DataTable(table.GetRow(0), table.GetRow(2001), table.GetRow(4001))),
              "{1=a, 2=clear}{1=b, 2=move, 3=c}{1=some, 2=text}");
}

TEST(TextToDataTableParser, KnownFieldsReadWhateverIsBeforeTheTerminatingZero) {
    const char* cursor = "a\nb c";
    std::string value = ">";
    EXPECT_TRUE(SpaceSeparatedField().Parse(&cursor, value));
    EXPECT_EQ(value, ">a\nb");
    EXPECT_TRUE(NullSeparatedField().Parse(&cursor, value));
    EXPECT_EQ(value, ">a\nbc");
    EXPECT_EQ(*cursor, '\0');
}

TEST(TextToDataTableParser, LongLinesAndManyEmptyLinesTakeLinearTime) {
    constexpr std::size_t kLong = 100'000'000, kMany = 3'000'000;
    EXPECT_EQ(Parsed<std::string>(std::string(kLong, 'x'), new NullSeparatedField).size(), kLong + 4);
    EXPECT_EQ(Parsed<std::string>(std::string(kMany, ' ') + 'x', new SpaceSeparatedField), "");
    EXPECT_EQ(Parsed<std::string>(std::string(kMany, '\n') + 'x', new SpaceSeparatedField), "{v=x}");
}

TEST(TextToDataTableParser, ManyShortLinesUnderManyColumnsTakeLinearTime) {
    constexpr int kMany = 50'000;
    std::string lines;
    TextToDataTableParser parser;
    for (int i = 0; i < kMany; ++i) {
        parser.AddField<std::string>("v", std::make_unique<FixedWidthField>(2));
        lines += "x\n";
    }
    DataTable table;
    parser.Parse(lines, table);
    EXPECT_EQ(table.GetNumberOfRows(), std::size_t{kMany});
}

}  // namespace
}  // namespace quillon::test
