#include "quillon/SequenceNumberUtils.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace quillon {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

constexpr int kHuge = 10'000'000;

TEST(SequenceNumberUtils, ReadsPiecesAsTheCLibraryDoesAndAppends) {
    std::vector<unsigned long long> list{0};
    const std::string text =
        "5,,0,7,\t\n8x6, +9 , ,x5,- 5,+-5,-1,18446744073709551616,-18446744073709551616,1\0002"s;
    SequenceNumberUtils::SequenceNumberCsvToList(text, list);
    constexpr unsigned long long kLargest = 18446744073709551615U;
    EXPECT_THAT(list, ElementsAre(0, 5, 7, 8, 9, kLargest, kLargest, kLargest, 1));
    EXPECT_EQ(SequenceNumberUtils::SequenceNumberListToCsv(list),
              "5,7,8,9,18446744073709551615,18446744073709551615,18446744073709551615,1");
    list.assign(3, 0);
    EXPECT_EQ(SequenceNumberUtils::SequenceNumberListToCsv(list), "");
    for (const char c : {',', ' ', '9'}) {
        SequenceNumberUtils::SequenceNumberCsvToList(std::string(kHuge, c) + ",1", list);
    }
    EXPECT_THAT(list, ElementsAre(0, 0, 0, 1, 1, kLargest, 1));
}

}  // namespace
}  // namespace quillon
