#include <algorithm>
#include <array>
#include <string_view>

#include "base/ByteBlocks.h"
#include "base/HexDigits.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using base::HexDigit;
using base::kUpperDigits;

template <class String>
String BackslashQuotes(const String& text) {
    String escaped;
    escaped.reserve(text.size());
    for (const auto c : text) {
        if (c == '\\' || c == '"') escaped.push_back('\\');
        escaped.push_back(c);
    }
    return escaped;
}

constexpr std::array<bool, 256> kUrlEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const char c : std::string_view(" !#$&'()*+,;=@[]")) escaped[static_cast<unsigned char>(c)] = true;
    return escaped;
}();

/// The byte that two hexadecimal digits stand for, negative when they are none.
int HexByte(char high, char low) {
    const int upper = HexDigit(high);
    const int lower = HexDigit(low);
    return upper < 0 || lower < 0 ? -1 : upper * 16 + lower;
}

}  // namespace

std::string StringUtils::ProtectInQuotedString(const std::string& text) { return BackslashQuotes(text); }
std::wstring StringUtils::ProtectInQuotedString(const std::wstring& text) { return BackslashQuotes(text); }

std::string StringUtils::ProtectPercents(const char* text) { return ProtectPercents(std::string(text)); }

std::string StringUtils::ProtectPercents(const std::string& text) {
    std::string doubled;
    doubled.reserve(text.size());
    for (const char c : text) {
        if (c == '%') doubled.push_back('%');
        doubled.push_back(c);
    }
    return doubled;
}

std::string StringUtils::UrlEncode(const std::string& text) {
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (kUrlEscaped[byte]) {
            encoded.append({'%', kUpperDigits[byte >> 4], kUpperDigits[byte & 15]});
        } else {
            encoded.push_back(c);
        }
    }
    return encoded;
}

std::string StringUtils::UrlDecode(const std::string& text) {
    std::string decoded(text.size(), '\0');
    char* out = decoded.data();
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t plain = base::CopyUntil(text.data() + i, text.size() - i, '%', out);
        out += plain;
        i += plain;
        if (i == text.size()) break;
        const int byte = text.size() - i > 2 ? HexByte(text[i + 1], text[i + 2]) : -1;
        *out++ = byte >= 0 ? static_cast<char>(byte) : '%';
        i += byte >= 0 ? 3 : 1;
    }
    decoded.resize(static_cast<std::size_t>(out - decoded.data()));
    return decoded;
}

std::string StringUtils::ByteArrayToHexString(const unsigned char* bytes, std::size_t count) {
    std::string hex(2 * count, '\0');
    base::WriteHex(bytes, count, hex.data());
    return hex;
}

bool StringUtils::HexStringToByteArray(const std::string& hex, unsigned char* buffer, std::size_t bufferSize,
                                       std::size_t& count) {
    if (hex.size() % 2 != 0) return false;
    const std::size_t wanted = hex.size() / 2;
    count = base::ReadHex(hex.data(), std::min(wanted, bufferSize), buffer);
    return count == wanted;
}

std::string StringUtils::ByteArrayToAsciiChars(const unsigned char* bytes, std::size_t count) {
    std::string characters(count, '.');
    for (std::size_t i = 0; i < count; ++i) {
        if (bytes[i] >= 32 && bytes[i] <= 126) characters[i] = static_cast<char>(bytes[i]);
    }
    return characters;
}

}  // namespace quillon
