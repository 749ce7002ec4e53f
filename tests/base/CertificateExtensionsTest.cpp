#include "base/CertificateExtensions.h"

#include <gtest/gtest.h>

namespace quillon::base {

namespace {

std::string Element(char tag, const std::string& content) {
    const auto size = static_cast<char>(content.size());
    return content.size() < 128 ? std::string{tag, size} + content : std::string{tag, '\x81', size} + content;
}

std::string Extension(const std::string& identifier, const std::string& value) {
    return Element(0x30, Element(6, identifier) + Element(1, "\xFF") + Element(4, value));
}

std::string WithExtensions(const std::string& extensions) {
    return Element(0x30, Element(0x30, Element(2, "\x01") + Element('\xA3', Element(0x30, extensions))));
}

const std::string kNames("\x55\x1D\x11"), kUsage("\x55\x1D\x0F"), kUsages("\x55\x1D\x25");

}  // namespace

TEST(CertificateExtensions, WhatIsMalformedIsLeftOut) {
    const std::string good = Extension(kUsage, Element(3, std::string("\x07\x01\x80", 3)));
    EXPECT_EQ(ReadCertificateExtensions(WithExtensions(good)).keyUsage, 0x8001u);
    const std::string broken[] = {
        Extension(kUsage, ""),
        Extension(kUsage, Element(3, "")),
        Extension(kUsage, Element(4, "\x07\x80")),
        Extension(kUsages, Element(0x30, Element(5, ""))),
        Extension(kUsages, Element(0x30, Element(6, "\x81"))),
        Extension(kUsages, Element(0x30, Element(6, std::string(100, 'x')))),
        Extension(kNames, Element(0x30, "\x82\x7F")),
        Element(0x30, Element(6, kUsage)),
        Element(0x30, Element(6, kUsage) + Element(1, "\xFF")),
    };
    for (const std::string& extension : broken) {
        const auto found = ReadCertificateExtensions(WithExtensions(extension + good));
        EXPECT_TRUE(found.keyUsage == 0x8001u && found.alternativeNames.empty()) << extension.size();
        for (const std::string& usage : found.usages.value_or(std::vector<std::string>{}))
            EXPECT_EQ(usage, "");
    }
    // The first of two is what counts, and a cut encoding is read without going past its end.
    const std::string second = Extension(kUsage, Element(3, std::string("\x00\x80", 2)));
    EXPECT_EQ(ReadCertificateExtensions(WithExtensions(good + second)).keyUsage, 0x8001u);
    const std::string whole = WithExtensions(good + Extension(kNames, Element(0x30, Element('\x82', "a.b"))));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(ReadCertificateExtensions(std::string(whole.substr(0, size))).alternativeNames.empty());
    EXPECT_EQ(ReadCertificateExtensions(whole).alternativeNames.at(0).content, "a.b");
}

TEST(CertificateExtensions, IdentifiersAreWrittenAsNumbers) {
    const std::pair<std::string, std::string> cases[] = {
        {"\x2B\x06\x01\x05\x05\x07\x03\x01", "1.3.6.1.5.5.7.3.1"},
        {"\x88\x37\x03", "2.999.3"},
        {std::string("\x00\x00", 2), "0.0.0"},
        {"\x2A\x84\x80\x80\x80\x80\x80\x80\x80\x00", ""},
        {"", ""}};
    for (const auto& [content, expected] : cases) {
        const auto found =
            ReadCertificateExtensions(WithExtensions(Extension(kUsages, Element(0x30, Element(6, content)))));
        EXPECT_EQ(found.usages.value().at(0), expected);
    }
}

}  // namespace quillon::base
