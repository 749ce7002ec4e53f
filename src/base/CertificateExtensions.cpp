#include "base/CertificateExtensions.h"

#include <cstddef>

namespace quillon::base {

namespace {

constexpr int kBoolean = 0x01, kBits = 0x03, kOctets = 0x04, kIdentifier = 0x06, kSequence = 0x30;
constexpr int kExtensions = 0xA3;
constexpr int kContextClass = 0x80, kClassBits = 0xC0, kNumberBits = 0x1F;

unsigned int ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

struct Element {
    int tag = 0;
    std::string_view content;
};

/// Takes an element off the front. Nothing for one that is cut, of indefinite length, or whose tag has
/// more than one byte.
std::optional<Element> Take(std::string_view& bytes) {
    constexpr std::size_t kMostLengthBytes = 4;
    if (bytes.size() < 2 || (ByteAt(bytes, 0) & kNumberBits) == kNumberBits) return std::nullopt;
    Element element{static_cast<int>(ByteAt(bytes, 0)), {}};
    std::size_t length = ByteAt(bytes, 1);
    bytes.remove_prefix(2);
    if (length >= 0x80) {
        const std::size_t count = length - 0x80;
        if (count == 0 || count > kMostLengthBytes || count > bytes.size()) return std::nullopt;
        length = 0;
        for (std::size_t i = 0; i < count; ++i) length = length << 8 | ByteAt(bytes, i);
        bytes.remove_prefix(count);
    }
    if (length > bytes.size()) return std::nullopt;
    element.content = bytes.substr(0, length);
    bytes.remove_prefix(length);
    return element;
}

std::optional<std::string_view> TakeContent(std::string_view& bytes, int tag) {
    const auto element = Take(bytes);
    return element && element->tag == tag ? std::optional(element->content) : std::nullopt;
}

/// "1.3.6.1.5.5.7.3.1" of the content of an identifier; empty for one that is malformed or too long.
std::string IdentifierText(std::string_view content) {
    constexpr std::size_t kLongest = 64;
    constexpr std::uint64_t kLargest = std::uint64_t{1} << 56;
    if (content.empty() || content.size() > kLongest) return {};
    std::string text;
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < content.size(); ++i) {
        const unsigned int byte = ByteAt(content, i);
        if (number >= kLargest) return {};
        number = number << 7 | (byte & 0x7F);
        if ((byte & 0x80) != 0) {
            if (i + 1 == content.size()) return {};
            continue;
        }
        if (text.empty()) {
            const std::uint64_t first = number < 80 ? number / 40 : 2;
            text = std::to_string(first) + '.' + std::to_string(number - first * 40);
        } else {
            text += '.' + std::to_string(number);
        }
        number = 0;
    }
    return text;
}

void ReadNames(std::string_view value, std::vector<CertificateExtensions::Name>& names) {
    auto list = TakeContent(value, kSequence);
    while (list && !list->empty()) {
        const auto element = Take(*list);
        if (!element) return;
        if ((element->tag & kClassBits) != kContextClass) continue;
        names.push_back({element->tag & kNumberBits, element->content});
    }
}

/// A string of bits, whose first byte tells how many bits of the last one are unused.
std::optional<std::uint32_t> ReadKeyUsage(std::string_view value) {
    const auto bits = TakeContent(value, kBits);
    if (!bits || bits->empty()) return std::nullopt;
    std::uint32_t usage = 0;
    if (bits->size() > 1) usage |= ByteAt(*bits, 1);
    if (bits->size() > 2) usage |= ByteAt(*bits, 2) << 8;
    return usage;
}

std::optional<std::vector<std::string>> ReadUsages(std::string_view value) {
    auto list = TakeContent(value, kSequence);
    if (!list) return std::nullopt;
    std::vector<std::string> usages;
    while (!list->empty()) {
        const auto identifier = TakeContent(*list, kIdentifier);
        if (!identifier) break;
        usages.push_back(IdentifierText(*identifier));
    }
    return usages;
}

void ReadExtension(std::string_view extension, CertificateExtensions& found) {
    const auto identifier = TakeContent(extension, kIdentifier);
    auto next = Take(extension);
    if (next && next->tag == kBoolean) next = Take(extension);
    if (!identifier || !next || next->tag != kOctets) return;
    if (*identifier == "\x55\x1D\x11" && found.alternativeNames.empty()) {
        ReadNames(next->content, found.alternativeNames);
    } else if (*identifier == "\x55\x1D\x0F" && !found.keyUsage) {
        found.keyUsage = ReadKeyUsage(next->content);
    } else if (*identifier == "\x55\x1D\x25" && !found.usages) {
        found.usages = ReadUsages(next->content);
    }
}

}  // namespace

CertificateExtensions ReadCertificateExtensions(std::string_view certificate) {
    CertificateExtensions found;
    auto outer = TakeContent(certificate, kSequence);
    auto fields = outer ? TakeContent(*outer, kSequence) : std::nullopt;
    while (fields && !fields->empty()) {
        const auto field = Take(*fields);
        if (!field) break;
        if (field->tag != kExtensions) continue;
        std::string_view content = field->content;
        auto list = TakeContent(content, kSequence);
        while (list && !list->empty()) {
            const auto extension = TakeContent(*list, kSequence);
            if (!extension) break;
            ReadExtension(*extension, found);
        }
    }
    return found;
}

}  // namespace quillon::base
