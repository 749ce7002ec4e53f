#include <gtest/gtest.h>

#include "platform/win32/WindowsHeaders.h"

#include <shellapi.h>

#include <string>
#include <vector>

#include "base/CommandLine.h"
#include "base/Utf.h"

namespace quillon::platform {
namespace {

std::vector<std::string> SplitBySystem(const std::string& line) {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(base::ToWide(line).c_str(), &count);
    std::vector<std::string> narrow;
    for (int i = 0; i < count; ++i) narrow.push_back(base::ToUtf8(arguments[i]));
    ::LocalFree(arguments);
    return narrow;
}

// Every line of up to eight of the characters that matter.
TEST(CommandLine, IsCutAsTheSystemCutsIt) {
    const std::string alphabet = "a \"\\";
    std::vector<std::string> lines = {""};
    for (std::size_t i = 0; lines[i].size() < 8; ++i) {
        for (const char c : alphabet) lines.push_back(lines[i] + c);
    }
    lines.erase(lines.begin());  // the system answers an empty line with the program's path
    for (const std::string& line : lines)
        ASSERT_EQ(base::SplitCommandLine(line), SplitBySystem(line)) << line;
}

}  // namespace
}  // namespace quillon::platform
