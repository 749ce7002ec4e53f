#include "quillon/Version.h"

#include <gmock/gmock.h>

#include <unordered_set>
#include <utility>

namespace quillon {
namespace {

constexpr int kHuge = 10'000'000;

TEST(Version, IsReadAsTheCLibraryReadsNumbersAndDots) {
    const std::tuple<std::string, bool, std::string> cases[] = {
        {"1.2.3.4", true, "1.2.3.4"},
        {"1.2.3.4.5", false, "0.0.0.0"},
        {"1..3", false, "1.0.0.0"},
        {"1.2beta", true, "1.2.0.0"},
        {" 1.\t\r\n+2", true, "1.2.0.0"},
        {"-1.+-2", false, "4294967295.0.0.0"},
        {"4294967295.4294967296.18446744073709551616", true, "4294967295.0.4294967295.0"},
        {std::string(kHuge, ' ') + "7", true, "7.0.0.0"},
        {std::string(kHuge, '9'), true, "4294967295.0.0.0"},
        {std::string(kHuge, '.'), false, "0.0.0.0"},
    };
    for (const auto& [text, isValid, printed] : cases) {
        SCOPED_TRACE(text.substr(0, 50));
        EXPECT_EQ(Version(text).Valid(), isValid);
        EXPECT_EQ(Version(text).to_string(), printed);
    }
}

TEST(Version, ComparesPartsAsUnsignedNumbersWhateverTheValidity) {
    const Version version("1.2.3");
    for (const auto& [other, difference] : {
             std::pair(Version(2, 0, 0, 0), -4),
             std::pair(Version(1, 1, 9, 9), 3),
             std::pair(Version("1.2.4"), -2),
             std::pair(Version(1, 2, 3, 0xFFFFFFFF), -1),
             std::pair(Version("1.2.3."), 0),
         }) {
        SCOPED_TRACE(other.to_string());
        EXPECT_EQ(version.DeepCompare(other), difference);
        EXPECT_EQ(other.Compare(version), (difference < 0) - (difference > 0));
        EXPECT_EQ(version <=> other, difference <=> 0);
        EXPECT_EQ((std::unordered_set<Version>{version, other}.size()), difference == 0 ? 1u : 2u);
    }
}

}  // namespace
}  // namespace quillon
