#include <gmock/gmock.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "quillon/DataTableIO.h"

/// Numbers are written and read in the same way whatever locale a host or a module has set. The locales
/// are those that the build makes; Windows names its own differently.

namespace quillon {
namespace {

/// Sets a locale for its life.
class ForeignLocale {
public:
    explicit ForeignLocale(const char* name) {
        ::setenv("LOCPATH", QUILLON_TEST_LOCALES, 1);
        m_set = std::setlocale(LC_ALL, name) != nullptr;
    }
    ~ForeignLocale() {
        std::setlocale(LC_ALL, "C");
        ::unsetenv("LOCPATH");
    }
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

    bool IsSet() const { return m_set; }

private:
    bool m_set = false;
};

DataTable RandomTable(unsigned seed) {
    std::mt19937_64 random(seed);
    const auto text = [&] {
        static const char* const kParts[] = {"1.5", "1,5", "\xD9\xAB", "a", "\"", "\n", " ", "-0", ";"};
        std::string result;
        for (auto count = random() % 4; count > 0; --count) result += kParts[random() % std::size(kParts)];
        return result;
    };
    DataTable table;
    for (auto rows = random() % 4 + 1; rows > 0; --rows) {
        VariantList row;
        row.Add("text", text());
        row.Add("integer", static_cast<long long>(random()));
        row.Add("real", std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 130));
        row.Add("flag", random() % 2 == 0);
        row.Add("nested", "[1.5,{\"a\":-2.25e-3}]");
        row.Add(Variant::NullVariant("none"));
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
    if (!locale.IsSet()) GTEST_SKIP() << "the build could not make the locale";
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

INSTANTIATE_TEST_SUITE_P(, DataTableLocale,
                         testing::Values("C.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8", "ps_AF.UTF-8"));

}  // namespace
}  // namespace quillon
