#include "quillon/UniqueIdentifier.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/Characters.h"
#include "base/HexDigits.h"
#include "platform/IdentifierApi.h"
#include "platform/ole/OleTypes.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using base::HexDigit;
using base::IsSpace;
using base::kLowerDigits;

constexpr std::size_t kLength = 36;

/// A dash stands in front of these bytes.
constexpr bool IsGroupStart(std::size_t index) {
    return index == 4 || index == 6 || index == 8 || index == 10;
}

/// Two characters as scanf's "%x" reads them: a digit may have white space or a
/// sign in front, or what is no digit behind. Nothing when there is no digit.
std::optional<unsigned char> ReadByte(char first, char second) {
    const int high = HexDigit(first);
    const int low = HexDigit(second);
    if (high >= 0) return static_cast<unsigned char>(low >= 0 ? high * 16 + low : high);
    if (low < 0 || !(IsSpace(first) || first == '+' || first == '-')) return std::nullopt;
    return static_cast<unsigned char>(first == '-' ? -low : low);
}

}  // namespace

static_assert(sizeof(GUID) == 16);

UniqueIdentifier::UniqueIdentifier(const unsigned char (&bytes)[16]) {
    std::copy(std::begin(bytes), std::end(bytes), m_bytes.begin());
}

UniqueIdentifier::UniqueIdentifier(const GUID& guid) {
    CopyFlipEndianness(reinterpret_cast<const unsigned char*>(&guid), m_bytes.data());
}

UniqueIdentifier UniqueIdentifier::Generate() {
    GUID guid{};
    return platform::CreateIdentifier(guid) ? UniqueIdentifier(guid) : UniqueIdentifier();
}

UniqueIdentifier UniqueIdentifier::Parse(const std::string& text, bool* ok) {
    std::string_view digits = text;
    const bool isBraced = digits.size() == kLength + 2;
    *ok = isBraced ? digits.front() == '{' && digits.back() == '}' : digits.size() == kLength;
    if (isBraced) digits = digits.substr(1, kLength);

    UniqueIdentifier identifier;
    if (digits.size() != kLength) return identifier;
    std::size_t position = 0;
    for (std::size_t i = 0; i < identifier.m_bytes.size(); ++i, position += 2) {
        if (IsGroupStart(i)) ++position;
        const auto byte = ReadByte(digits[position], digits[position + 1]);
        if (!byte) {
            *ok = false;
            break;
        }
        identifier.m_bytes[i] = *byte;
    }
    return identifier;
}

std::string UniqueIdentifier::ToString() const {
    std::string text(kLength, '-');
    auto out = text.begin();
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (IsGroupStart(i)) ++out;
        *out++ = kLowerDigits[m_bytes[i] >> 4];
        *out++ = kLowerDigits[m_bytes[i] & 0xF];
    }
    return text;
}

std::string UniqueIdentifier::ToStringJustHex() const {
    return StringUtils::ByteArrayToHexString(m_bytes.data(), m_bytes.size());
}

void UniqueIdentifier::ToBinary(unsigned char (&bytes)[16]) const {
    std::copy(m_bytes.begin(), m_bytes.end(), bytes);
}

GUID UniqueIdentifier::ToMsGuid() const {
    GUID guid;
    CopyFlipEndianness(m_bytes.data(), reinterpret_cast<unsigned char*>(&guid));
    return guid;
}

bool UniqueIdentifier::IsEmpty() const { return *this == UniqueIdentifier(); }

void UniqueIdentifier::CopyFlipEndianness(const unsigned char* from, unsigned char* to) {
    std::reverse_copy(from, from + 4, to);
    std::reverse_copy(from + 4, from + 6, to + 4);
    std::reverse_copy(from + 6, from + 8, to + 6);
    std::copy(from + 8, from + 16, to + 8);
}

std::ostream& operator<<(std::ostream& stream, const UniqueIdentifier& identifier) {
    return stream << identifier.ToString();
}

}  // namespace quillon
