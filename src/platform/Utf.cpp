#include "platform/Utf.h"

#include <cstdint>

#include "platform/AsciiRun.h"

namespace quillon::platform {

namespace {

using Byte = unsigned char;

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr wchar_t kWideReplacement = 0xFFFD;

bool IsContinuation(Byte byte) { return (byte & 0xC0) == 0x80; }
bool IsHighSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
bool IsLowSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }
bool IsSurrogate(std::uint32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }

/// How many bytes at `p` are a character's beginning: `complete` when they are all
/// of it, otherwise its maximal subpart, which is at least one byte.
struct Sequence {
    std::size_t length;
    bool complete;
};

/// The smallest and largest second byte that a lead byte allows (Unicode, table 3-7).
bool IsSecondByte(Byte lead, Byte second) {
    const Byte least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const Byte most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= least && second <= most;
}

Sequence Examine(const Byte* p, std::size_t available) {
    const Byte lead = p[0];
    if (lead < 0x80) return {1, true};
    if (lead < 0xC2 || lead > 0xF4) return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (available < 2 || !IsSecondByte(lead, p[1])) return {1, false};
    std::size_t valid = 2;
    while (valid < length && valid < available && IsContinuation(p[valid])) ++valid;
    return {valid, valid == length};
}

/// The character of a complete sequence of two bytes or more.
std::uint32_t Assemble(const Byte* p, std::size_t length) {
    const auto tail = [p](std::size_t i) { return static_cast<std::uint32_t>(p[i] & 0x3F); };
    if (length == 2) return static_cast<std::uint32_t>(p[0] & 0x1F) << 6 | tail(1);
    if (length == 3) return static_cast<std::uint32_t>(p[0] & 0x0F) << 12 | tail(1) << 6 | tail(2);
    return static_cast<std::uint32_t>(p[0] & 0x07) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
}

/// Exactly the units that valid UTF-8 becomes; of invalid text never fewer than its
/// valid beginning becomes.
std::size_t CountUnits(std::string_view text) {
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<Byte>(c);
        units += static_cast<std::size_t>(!IsContinuation(byte)) + static_cast<std::size_t>(byte >= 0xF0);
    }
    return units;
}

template <class Unit>
Unit* PutUnits(std::uint32_t character, Unit* out) {
    if (character < 0x10000) {
        *out++ = static_cast<Unit>(character);
        return out;
    }
    *out++ = static_cast<Unit>(0xD7C0 + (character >> 10));
    *out++ = static_cast<Unit>(0xDC00 + (character & 0x3FF));
    return out;
}

/// The whole text in UTF-16, or nothing when it is invalid.
template <class String>
std::optional<String> Decode(std::string_view text) {
    String wide(CountUnits(text), 0);
    auto* out = wide.data();
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t ascii = WidenAscii(text.data() + i, text.size() - i, out);
        i += ascii;
        out += ascii;
        // Characters of the same kind come in runs.
        while (i < text.size() && static_cast<Byte>(text[i]) >= 0x80) {
            const auto* const p = reinterpret_cast<const Byte*>(text.data() + i);
            const Sequence sequence = Examine(p, text.size() - i);
            if (!sequence.complete) return std::nullopt;
            out = PutUnits(Assemble(p, sequence.length), out);
            i += sequence.length;
        }
    }
    return wide;
}

template <class Unit>
std::uint32_t Value(Unit unit) {
    return static_cast<std::make_unsigned_t<Unit>>(unit);
}

/// Exactly the bytes that valid UTF-16 becomes; of invalid text never fewer than
/// its valid beginning becomes.
template <class Unit>
std::size_t CountBytes(std::basic_string_view<Unit> text) {
    std::size_t bytes = text.size();
    for (const Unit unit : text) {
        const std::uint32_t value = Value(unit);
        bytes += static_cast<std::size_t>(value >= 0x80) +
                 static_cast<std::size_t>(value >= 0x800 && !IsSurrogate(value));
    }
    return bytes;
}

char* PutBytes(std::uint32_t character, char* out) {
    const auto put = [&out](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
    const auto tail = [&](unsigned shift) { put(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        tail(6);
        tail(0);
    } else {
        put(0xF0 | character >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
    return out;
}

/// Reads the character at `i` and moves past it; false when it is no valid one.
template <class Unit>
bool TakeCharacter(std::basic_string_view<Unit> text, std::size_t& i, std::uint32_t& character) {
    character = Value(text[i]);
    if (character > 0xFFFF) return false;
    if (!IsSurrogate(character)) {
        ++i;
        return true;
    }
    if (!IsHighSurrogate(character) || i + 1 == text.size() || !IsLowSurrogate(Value(text[i + 1])))
        return false;
    character = 0x10000 + ((character & 0x3FF) << 10) + (Value(text[i + 1]) & 0x3FF);
    i += 2;
    return true;
}

/// The longest valid beginning in UTF-8; `consumed` tells how many units that are.
template <class Unit>
std::string EncodePrefix(std::basic_string_view<Unit> text, std::size_t& consumed) {
    std::string narrow(text.size(), '\0');
    std::size_t i = NarrowAscii(text.data(), text.size(), narrow.data());
    char* out = narrow.data() + i;
    if (i < text.size()) {
        narrow.resize(i + CountBytes(text.substr(i)));
        out = narrow.data() + i;
    }
    std::uint32_t character = 0;
    while (i < text.size() && TakeCharacter(text, i, character)) {
        out = PutBytes(character, out);
        if (i == text.size() || Value(text[i]) >= 0x80) continue;
        const std::size_t ascii = NarrowAscii(text.data() + i, text.size() - i, out);
        i += ascii;
        out += ascii;
    }
    narrow.resize(static_cast<std::size_t>(out - narrow.data()));
    consumed = i;
    return narrow;
}

}  // namespace

std::optional<std::wstring> Utf8ToWide(std::string_view text) { return Decode<std::wstring>(text); }

std::optional<std::string> WideToUtf8(std::wstring_view text) {
    std::size_t consumed = 0;
    std::string narrow = EncodePrefix(text, consumed);
    if (consumed != text.size()) return std::nullopt;
    return narrow;
}

std::wstring ToWide(std::string_view text) {
    if (auto wide = Utf8ToWide(text)) return std::move(*wide);
    return *Utf8ToWide(RepairUtf8(text));
}

std::string ToUtf8(std::wstring_view text) {
    if (auto narrow = WideToUtf8(text)) return std::move(*narrow);
    std::wstring repaired(text);
    std::uint32_t ignored = 0;
    for (std::size_t i = 0; i < repaired.size();) {
        if (!TakeCharacter(std::wstring_view(repaired), i, ignored)) repaired[i++] = kWideReplacement;
    }
    return *WideToUtf8(repaired);
}

std::size_t FindInvalidUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const Sequence sequence = Examine(reinterpret_cast<const Byte*>(text.data() + i), text.size() - i);
        if (!sequence.complete) return i;
        i += sequence.length;
    }
    return std::string_view::npos;
}

std::string RepairUtf8(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    for (;;) {
        const std::size_t invalid = FindInvalidUtf8(text);
        repaired.append(text.substr(0, invalid));
        if (invalid == std::string_view::npos) return repaired;
        repaired.append(kReplacement);
        text.remove_prefix(invalid);
        text.remove_prefix(Examine(reinterpret_cast<const Byte*>(text.data()), text.size()).length);
    }
}

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian) {
    std::u16string units(bytes.size() / 2, u'\0');
    const unsigned first = bigEndian ? 8 : 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned>(static_cast<Byte>(bytes[at])); };
        units[i] = static_cast<char16_t>(byte(2 * i) << first | byte(2 * i + 1) << (8 - first));
    }
    std::size_t consumed = 0;
    return EncodePrefix(std::u16string_view(units), consumed);
}

std::optional<std::string> Utf8ToUtf16Bytes(std::string_view text, bool bigEndian) {
    const auto units = Decode<std::u16string>(text);
    if (!units) return std::nullopt;
    std::string bytes(2 * units->size(), '\0');
    const unsigned first = bigEndian ? 8 : 0;
    for (std::size_t i = 0; i < units->size(); ++i) {
        bytes[2 * i] = static_cast<char>((*units)[i] >> first);
        bytes[2 * i + 1] = static_cast<char>((*units)[i] >> (8 - first));
    }
    return bytes;
}

}  // namespace quillon::platform
