#include "providers/CommandOutput.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quillon {

TEST(CommandOutput, LinesLoseTheirEndsOnly) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"a\r\nb", {"4|a|0", "4|b|1"}},
        {"\n\nx", {"4||0", "4||1", "4|x|2"}},
        {"a\v\f\r\r\n \tb ", {"4|a\v|0", "4| \tb |1"}},
        {std::string("a\0b\nc", 5), {std::string("4|a\0b|0", 7), "4|c|1"}}};
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        DataTable table;
        AddOutputRows(text, 4, true, table);
        std::vector<std::string> lines;
        for (const VariantList& row : table) lines.push_back(row.ToString("|", nullptr));
        EXPECT_EQ(lines, expected);
    }
}

}  // namespace quillon
