#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon::base {

/// Turns UTF-16 bytes of either order into UTF-8 one piece after the other, wherever the pieces were cut.
class Utf16Decoder {
public:
    explicit Utf16Decoder(bool bigEndian) : m_bigEndian(bigEndian) {}

    /// Appends what the bytes become to `text`. False from the first invalid unit on, before which the text
    /// ends; half a character at the end is kept for the next piece.
    bool Add(std::string_view bytes, std::string& text);

private:
    static constexpr std::size_t kUnits = 4096;

    /// Takes what is kept, which has come to whole units.
    void AddKept(std::string& text);
    /// Appends kUnits units at most; what is half a character at their end is kept.
    void AddUnits(std::string_view bytes, std::string& text);

    bool m_bigEndian;
    bool m_hasFailed = false;
    char m_kept[4] = {};
    std::size_t m_keptSize = 0;  ///< 3 at most: half a pair and half a unit
};

}  // namespace quillon::base
