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

/// Holds the sixteen bytes of an identifier in the order in which they are printed (RFC 4122, section
/// 3). All bytes zero is the empty identifier. It is a plain value, ordered by its bytes and usable as
/// a key; nothing is logged.
///
/// @code
/// bool ok = false;
/// const auto id = UniqueIdentifier::Parse("{6BA7B810-9DAD-11D1-80B4-00C04FD430C8}", &ok);
/// if (ok) std::cout << id << '\n';  // 6ba7b810-9dad-11d1-80b4-00c04fd430c8
/// @endcode
class QUILLON_API UniqueIdentifier {
public:
    UniqueIdentifier() = default;
    /// Takes the bytes in the order in which they are printed.
    UniqueIdentifier(const unsigned char (&bytes)[16]);
    /// Takes a GUID, whose first three fields are in the machine's byte order.
    UniqueIdentifier(const windows::GUID& guid);

    /// Returns a new random identifier; the empty one when the system cannot make one.
    static UniqueIdentifier Generate();
    /// Reads 36 characters, or 38 with braces. `ok`, which must not be null, says whether all was well;
    /// what could be read is returned in either case. The characters in the places of the dashes are
    /// not checked.
    static UniqueIdentifier Parse(const std::string& text, bool* ok);

    /// Return 36 lower-case characters with dashes, and 32 without dashes.
    std::string ToString() const;
    std::string ToStringJustHex() const;
    /// Writes the bytes in the order in which they are printed.
    void ToBinary(unsigned char (&bytes)[16]) const;
    windows::GUID ToMsGuid() const;
    bool IsEmpty() const;

    std::strong_ordering operator<=>(const UniqueIdentifier& other) const = default;
    bool operator==(const UniqueIdentifier& other) const = default;

private:
    friend struct std::hash<UniqueIdentifier>;

    static void CopyFlipEndianness(const unsigned char* from, unsigned char* to);

    std::array<unsigned char, 16> m_bytes{};
};

/// Writes ToString().
QUILLON_API std::ostream& operator<<(std::ostream& stream, const UniqueIdentifier& identifier);

}  // namespace quillon

template <>
struct std::hash<quillon::UniqueIdentifier> {
    /// Mixes both halves; equal identifiers have equal hashes.
    std::size_t operator()(const quillon::UniqueIdentifier& identifier) const noexcept {
        std::uint64_t halves[2];
        std::memcpy(halves, identifier.m_bytes.data(), sizeof halves);
        return std::hash<std::uint64_t>()(halves[0] * 0x9E3779B97F4A7C15U ^ halves[1]);
    }
};
