#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Sixteen bytes in the order in which they are printed (RFC 4122, 3). All zero is
/// the empty identifier. A plain value, ordered by its bytes.
class QUILLON_API UniqueIdentifier {
public:
    UniqueIdentifier() = default;
    explicit UniqueIdentifier(const unsigned char (&bytes)[16]);
    /// A GUID keeps its first three fields in the machine's byte order.
    explicit UniqueIdentifier(const GUID& guid);

    /// A new random identifier; empty when the system has none to give.
    static UniqueIdentifier Generate();
    /// 36 characters, or 38 with braces. `ok`, which must not be null, tells whether
    /// all was well; what could be read is returned either way. The dashes' positions
    /// are skipped unchecked.
    static UniqueIdentifier Parse(const std::string& text, bool* ok);

    /// 36 lower-case characters with dashes; 32 without.
    std::string ToString() const;
    std::string ToStringJustHex() const;
    void ToBinary(unsigned char (&bytes)[16]) const;
    GUID ToMsGuid() const;
    bool IsEmpty() const;

    std::strong_ordering operator<=>(const UniqueIdentifier& other) const = default;
    bool operator==(const UniqueIdentifier& other) const = default;

private:
    friend struct std::hash<UniqueIdentifier>;

    static void CopyFlipEndianness(const unsigned char* from, unsigned char* to);

    std::array<unsigned char, 16> m_bytes{};
};

QUILLON_API std::ostream& operator<<(std::ostream& stream, const UniqueIdentifier& identifier);

}  // namespace quillon

template <>
struct std::hash<quillon::UniqueIdentifier> {
    std::size_t operator()(const quillon::UniqueIdentifier& identifier) const noexcept {
        std::uint64_t halves[2];
        std::memcpy(halves, identifier.m_bytes.data(), sizeof halves);
        return std::hash<std::uint64_t>()(halves[0] * 0x9E3779B97F4A7C15U ^ halves[1]);
    }
};
