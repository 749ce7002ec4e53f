#include "platform/CertificateApi.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "base/Utf.h"
#include "support/System.h"
#include "support/TestCertificate.h"

namespace quillon::platform {

namespace {

using Tag = int;
constexpr Tag kOctets = 4, kUtf8 = 12, kPrintable = 19, kIa5 = 22, kUniversal = 28, kBmp = 30, kSequence = 48,
              kSet = 49;

std::string Element(Tag tag, const std::string& content) {
    const std::size_t size = content.size();
    std::string length(1, static_cast<char>(size));
    if (size >= 128)
        length = {'\x83', static_cast<char>(size >> 16), static_cast<char>(size >> 8 & 0xFF),
                  static_cast<char>(size & 0xFF)};
    return static_cast<char>(tag) + length + content;
}

std::string Attribute(const std::string& identifier, Tag tag, const std::string& value) {
    return Element(kSequence, Element(6, identifier) + Element(tag, value));
}
std::string CommonName(Tag tag, const std::string& value) { return Attribute("\x55\x04\x03", tag, value); }
std::string NameOf(const std::string& attributes) { return Element(kSequence, Element(kSet, attributes)); }

std::string TextOf(std::string name) {
    CRYPTOAPI_BLOB blob{};
    blob.cbData = static_cast<std::uint32_t>(name.size());
    blob.pbData = reinterpret_cast<std::uint8_t*>(name.data());
    const auto text = CertificateNameText(blob);
    return text ? base::ToUtf8(*text) : "(none)";
}

}  // namespace

TEST(CertificateApi, NamesAreQuotedAsTheSystemQuotesThem) {
    std::vector<std::pair<std::string, std::string>> values = {{"plain  text", "plain  text"},
                                                               {"a'b\\/", "a'b\\/"},
                                                               {" x", "\" x\""},
                                                               {"x ", "\"x \""},
                                                               {"a\"b", "\"a\"\"b\""}};
    for (const char c : std::string(",+=\n<>#;")) values.push_back({{'a', c, 'b'}, {'"', 'a', c, 'b', '"'}});
    for (const auto& [value, expected] : values)
        EXPECT_EQ(TextOf(NameOf(CommonName(kPrintable, value))), "CN=" + expected) << expected;
}

TEST(CertificateApi, NamesAreReadInEveryAlphabet) {
    const std::string a = CommonName(kPrintable, "a"), city("\x55\x04\x07"), other("\x2A\x03\x04");
    const std::pair<std::string, std::string> names[] = {
        {NameOf(CommonName(kUtf8, "\xC3\xA9\xF0\x9F\x98\x80")), "CN=\xC3\xA9\xF0\x9F\x98\x80"},
        {NameOf(CommonName(kBmp, std::string("\0A\0\xE9", 4))), "CN=A\xC3\xA9"},
        {NameOf(Attribute(city, kIa5, "x") + a), "L=x + CN=a"},
        {Element(kSequence, Element(kSet, a) + Element(kSet, a)), "CN=a, CN=a"}};
    for (const auto& [name, expected] : names) EXPECT_EQ(TextOf(name), expected) << expected;
    if (test::kWindows) return;  // the emulator leaves these out, and has no prefix
    const std::pair<std::string, std::string> rare[] = {
        {NameOf(CommonName(kUniversal, std::string("\0\0\0A", 4))), "CN=A"},
        {NameOf(CommonName(kOctets, "\x0A\xCF")), "CN=#0ACF"},
        {NameOf(Attribute(other, kPrintable, "x")), "OID.1.2.3.4=x"}};
    for (const auto& [name, expected] : rare) EXPECT_EQ(TextOf(name), expected) << expected;
}

TEST(CertificateApi, HostileNamesHaveNoText) {
    if (test::kWindows) GTEST_SKIP() << "how far the system's own reader goes is the system's";
    const std::string a = CommonName(kPrintable, "a"), set = Element(kSet, a);
    std::string many;
    for (int n = 0; n < 10'000; ++n) many += set;
    const std::string limit(2'044, 'x');
    EXPECT_EQ(TextOf(NameOf(CommonName(kUtf8, limit))), "CN=" + limit);
    for (const std::string& name : {Element(kSequence, many), NameOf(CommonName(kUtf8, limit + "xyz")),
                                    NameOf(CommonName(kOctets, std::string(9'000, 'x')))}) {
        EXPECT_EQ(TextOf(name).size(), limit.size() + 3);  // what fits
        EXPECT_TRUE(TextOf(name).starts_with("CN="));
    }
    const std::string wide = limit.substr(1) + "\xF0\x9F\x98\x80";  // two units, of which one fits
    EXPECT_EQ(TextOf(Element(kSequence, Element(kSet, CommonName(kUtf8, wide)) + set)),
              "CN=" + limit.substr(1));
    const std::string names[] = {"",
                                 NameOf(CommonName(kUtf8, "\xFF")),
                                 NameOf(CommonName(kBmp, "odd")),
                                 NameOf(Attribute(std::string(200, '\x81') + '\1', kUtf8, "x")),
                                 NameOf(Attribute("", kUtf8, "x")),
                                 NameOf(Element(kSequence, "")),
                                 Element(kSequence, a),
                                 NameOf(a) + '\0',
                                 std::string("\x30\x80\0\0", 4),
                                 "\x30\x84\xFF\xFF\xFF\xFF",
                                 "\x31\x02" + a};
    for (const std::string& name : names) EXPECT_EQ(TextOf(name), "(none)") << name.size();
    const std::string good = NameOf(a);
    for (std::size_t size = 0; size < good.size(); ++size) EXPECT_EQ(TextOf(good.substr(0, size)), "(none)");
}

TEST(CertificateApi, CutCertificatesAreRefused) {
    const CertificateHandle whole = ReadCertificate(test::kCertificate);
    ASSERT_TRUE(whole);
    const std::string_view bytes(reinterpret_cast<const char*>(whole.Get()->pbCertEncoded),
                                 whole.Get()->cbCertEncoded);
    EXPECT_TRUE(ReadCertificate(bytes));
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(ReadCertificate(bytes.substr(0, size))) << size;
    std::string noSerial(bytes);
    noSerial.erase(9, 4)[8] = '\0';
    noSerial[3] = '\x29';  // the lengths around it
    noSerial[6] = '\xDC';
    const CertificateHandle bare = ReadCertificate(noSerial);
    EXPECT_TRUE(!bare || bare.Get()->pCertInfo->SerialNumber.cbData == 0);
}

}  // namespace quillon::platform
