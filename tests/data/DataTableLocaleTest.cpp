#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "quillon/DataTableIO.h"
#include "support/ForeignLocale.h"
#include "support/Split.h"

/// Numbers are written and read in the same way whatever locale a host or a module has set.

namespace quillon::test {
namespace {

/// A table whose names and texts hold what separates, quotes, ends or steers in one of the forms.
DataTable RandomTable(unsigned seed) {
    static const std::vector<std::string> kParts = [] {
        auto parts = Split(
            "1.5~1,5~\xD9\xAB~a~\"~\n~ ~-0~;~\r\n~\r~\\~\xE2\x80\xAE~\xEF\xBB\xBF~'~\t~"
            "{[:]}~\x1B~\x7F~\xC2\x85~=1+1~\xF0\x9F\x8D\xB5~null",
            '~');
        parts.emplace_back(1, '\0');
        return parts;
    }();
    std::mt19937_64 random(seed);
    const auto text = [&] {
        std::string result;
        for (auto count = random() % 4; count > 0; --count) result += kParts[random() % kParts.size()];
        return result;
    };
    std::string names[6];
    for (std::size_t i = 0; i < std::size(names); ++i) names[i] = text() + std::to_string(i);
    DataTable table;
    for (auto rows = random() % 4 + 1; rows > 0; --rows) {
        VariantList row;
        row.Add(names[0], text());
        row.Add(names[1], static_cast<long long>(random()));
        row.Add(names[2], std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 130));
        row.Add(names[3], random() % 2 == 0);
        row.Add(names[4], "[1.5,{\"a\":-2.25e-3}]");
        row.Add(Variant::NullVariant(names[5]));
        table.AddRow(std::move(row));
    }
    return table;
}

class DataTableLocale : public testing::TestWithParam<const char*> {};

TEST_P(DataTableLocale, EveryFormRoundTrips) {
    constexpr unsigned kTables = 200;
    std::vector<std::string> expected;
    for (unsigned seed = 0; seed < kTables; ++seed) {
        const DataTable table = RandomTable(seed);
        expected.push_back(ToJson(table) + ToJsonLines(table) + ToCsv(table) + ToText(table));
    }
    const ForeignLocale locale(GetParam());
    if (!locale.IsSet()) GTEST_SKIP() << "this machine does not have the locale";
    for (unsigned seed = 0; seed < kTables; ++seed) {
        const DataTable table = RandomTable(seed);
        ASSERT_EQ(ToJson(table) + ToJsonLines(table) + ToCsv(table) + ToText(table), expected[seed]);
        ASSERT_TRUE(FromJson(ToJson(table)) == table);
        ASSERT_TRUE(FromJson(ToJsonLines(table)) == table);
        CsvOptions typed;
        typed.types = *table.begin();
        ASSERT_TRUE(FromCsv(ToCsv(table), typed).ContentEqual(table));
    }
    const DataTable nested = FromJson(R"([{"n":[1.5,-0.25e1],"x":1.5}])");
    EXPECT_EQ(ToJson(nested), R"([{"n":"[1.5,-0.25e1]","x":1.5}])");
}

INSTANTIATE_TEST_SUITE_P(, DataTableLocale, testing::Values("C", "de_DE", "fr_FR", "ps_AF", "tr_TR"));

}  // namespace
}  // namespace quillon::test
