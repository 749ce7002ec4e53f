#include <gmock/gmock.h>

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "quillon/SequenceNumberUtils.h"
#include "quillon/UniqueIdentifier.h"
#include "quillon/Url.h"
#include "quillon/Version.h"

namespace quillon {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

constexpr int kHuge = 10'000'000;

struct Case {
    std::string text;
    bool valid;
    std::string printed;
};

TEST(Version, IsReadAsTheCLibraryReadsNumbersAndDots) {
    const Case cases[] = {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 50));
        EXPECT_EQ(Version(c.text).Valid(), c.valid);
        EXPECT_EQ(Version(c.text).to_string(), c.printed);
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

TEST(UrlParse, SplitsSchemeHostPortAndPath) {
    const Case cases[] = {
        {"HTTPS://host", true, "HTTPS://host:443/"},
        {"http://ho\nst/a b?c:d//e\0"s, true, "http://ho\nst:80/a%20b?c:d//e\0"s},
        {"ftp://host/", false, "ftp://host:0/"},
        {"http://host:x/", false, "http://host:0/"},
        {"http://host: \t+81x:9/", true, "http://host:81/"},
        {"http://host:-1/", true, "http://host:4294967295/"},
        {"http://host:8\0001"s, true, "http://host:8/"},
        {"http://host:99999999999", true, "http://host:2147483647/"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Url::Parse(c.text).ToString(), c.printed);
        EXPECT_EQ(Url::Parse(c.text).IsValid(), c.valid);
        EXPECT_FALSE(Url::Parse(c.text).Scheme().empty());
    }
}

TEST(UrlParse, KeepsTextThatIsNone) {
    for (const auto& text : {"host"s, "http:/host"s, "://host"s, "h p://host"s, "\xC3\xA9://h"s, "http:///"s,
                             "http://host:/p"s, "http://host/\n"s, "http://host/a\r"s, "http\0://host"s}) {
        SCOPED_TRACE(text);
        const Url url = Url::Parse(text);
        EXPECT_EQ(url.ToString(), text);
        EXPECT_EQ(url.Scheme() + url.Host() + url.Path() + std::to_string(url.Port()), "0");
        EXPECT_FALSE(url.IsValid());
    }
    EXPECT_EQ(Url::Parse("").ToString(), "://:0");  // no text to keep
}

TEST(UrlParse, TakesLongTexts) {
    const std::string word(kHuge, 'a');
    EXPECT_EQ(Url::Parse(word + "://h").Scheme(), word);
    EXPECT_EQ(Url::Parse("http://" + word).Host(), word);
    EXPECT_EQ(Url::Parse("http://h/" + word + "\n").Host(), "");
    EXPECT_EQ(Url::Parse("http://h:" + std::string(kHuge, '0') + "80").Port(), 80u);
    EXPECT_EQ(Url::Parse("http://h/" + std::string(kHuge, ' ')).Path().size(), 3u * kHuge + 1);
}

TEST(UniqueIdentifier, IsReadAsTheCLibraryReadsBytePairs) {
    const Case cases[] = {
        {"00112233x4455\0"s + "6677}8899{AABBCCDDEEFF", true, "00112233-4455-6677-8899-aabbccddeeff"},
        {"{00112233-4455-6677-8899-aabbccddeeff}", true, "00112233-4455-6677-8899-aabbccddeeff"},
        {"{00112233-4455-6677-8899-aabbccddeeff)", false, "00112233-4455-6677-8899-aabbccddeeff"},
        {" 0\t1+2-1-4z0X-0g66-8899-aabbccddeeff", true, "000102ff-0400-0066-8899-aabbccddeeff"},
        {"0011  33-4455-6677-8899-aabbccddeeff", false, "00110000-0000-0000-0000-000000000000"},
        {"0011+-33-4455-6677-8899-aabbccddeeff", false, "00110000-0000-0000-0000-000000000000"},
        {"00112233-4455-6677-8899-aabbccddee\0"s + "f", false, "00112233-4455-6677-8899-aabbccddee00"},
        {std::string(kHuge, '1'), false, "00000000-0000-0000-0000-000000000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40));
        bool ok = !c.valid;
        EXPECT_EQ(UniqueIdentifier::Parse(c.text, &ok).ToString(), c.printed);
        EXPECT_EQ(ok, c.valid);
    }
}

TEST(UniqueIdentifier, IsOrderedByItsBytesAsUnsignedValues) {
    const unsigned char bytes[2][16] = {{0x7F, 0xFF}, {0x80, 0}};
    const UniqueIdentifier low(bytes[0]);
    const UniqueIdentifier high(bytes[1]);
    EXPECT_LT(low, high);
    EXPECT_FALSE(high < low || high.IsEmpty() || !UniqueIdentifier().IsEmpty());
    EXPECT_EQ((std::unordered_set<UniqueIdentifier>{low, high, low}.size()), 2u);
    EXPECT_EQ(low.ToStringJustHex(), "7fff0000000000000000000000000000");
    unsigned char copy[16];
    high.ToBinary(copy);
    EXPECT_EQ(copy[0], 0x80);
}

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
