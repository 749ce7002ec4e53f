#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace quillon::test {

/// The lines of a text; they end with LF or CR LF.
inline std::vector<std::string> LinesOf(std::string text) {
    std::erase(text, '\r');
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// The level and text of each line of a log, "INFO  - text", once its time stamp and thread are checked.
inline std::vector<std::string> EntriesOf(const std::string& log) {
    static const std::regex head(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[(?=[ \d]{5}) *\d+\] )");
    std::vector<std::string> entries;
    for (const std::string& line : LinesOf(log)) {
        std::smatch match;
        EXPECT_TRUE(std::regex_search(line, match, head, std::regex_constants::match_continuous)) << line;
        entries.push_back(match.suffix());
    }
    return entries;
}

}  // namespace quillon::test
