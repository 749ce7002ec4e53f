#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

namespace quillon {

/// A number as the C library reads it: white space, a sign, digits (base 16: behind an
/// optional "0x"), up to the first unit that is none.
struct LsZNumber {
    bool isThere = false;  ///< otherwise it is 0
    bool isNegative = false;
    std::uint64_t magnitude = 0;  ///< the largest when the number is larger

    /// The base is 10 or 16.
    static LsZNumber Read(std::string_view text, unsigned base);

    /// Reads a number as strtol does, and for unsigned types as strtoul, which negates after a minus;
    /// past the range it is the end of the range.
    template <class Number>
    Number As() const {
        constexpr std::uint64_t most = std::numeric_limits<Number>::max();
        constexpr bool isSigned = std::is_signed_v<Number>;
        const std::uint64_t limit = most + (isSigned && isNegative ? 1 : 0);
        if (!isSigned && magnitude > limit) return static_cast<Number>(limit);
        const std::uint64_t bounded = magnitude < limit ? magnitude : limit;
        return static_cast<Number>(isNegative ? 0 - bounded : bounded);
    }
};

/// Where the values begin in the text behind a name, by the first occurrence of each key in
/// any case; kNone when it has none.
struct LsZFields {
    static constexpr std::size_t kNone = std::string_view::npos;

    std::size_t hexLength = kNone;  ///< " ln=0x"
    std::size_t length = kNone;     ///< " ln="
    std::size_t time = kNone;       ///< " dt="
    std::size_t from = kNone;       ///< "From="
    std::size_t to = kNone;         ///< "To="
    std::size_t rdc = kNone;        ///< "RDC="
    std::size_t crc = kNone;        ///< "CRC="

    /// One pass over the text.
    static LsZFields Find(std::string_view text);
};

}  // namespace quillon
