#include "base/Utf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "base/AsciiRun.h"
#include "base/FillString.h"
#include "base/ThreeByteRun.h"
#include "base/Utf16Decoder.h"
#include "base/UtfCounts.h"

namespace quillon::base {

namespace {

using Byte = unsigned char;

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr wchar_t kWideReplacement = 0xFFFD;

bool IsContinuation(Byte byte) { return (byte & 0xC0) == 0x80; }
bool IsHighSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
bool IsLowSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }
bool IsSurrogate(std::uint32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }

/// The smallest and largest second byte that a lead byte allows (Unicode, table 3-7).
bool IsSecondByte(Byte lead, Byte second) {
    const Byte least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const Byte most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return second >= least && second <= most;
}

/// The length of the maximal subpart, at least one byte, of the invalid sequence at `p`.
std::size_t SubpartLength(const Byte* p, std::size_t available) {
    const Byte lead = p[0];
    if (lead < 0xC2 || lead > 0xF4 || available < 2 || !IsSecondByte(lead, p[1])) return 1;
    const std::size_t most = std::min<std::size_t>(lead < 0xF0 ? 2 : 3, available);
    std::size_t length = 2;
    while (length < most && IsContinuation(p[length])) ++length;
    return length;
}

constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

/// The character, not an ASCII one, at `p`, which is moved past it; or kInvalid, `p`
/// being of no use then.
inline std::uint32_t TakeSequence(const Byte*& p, const Byte* end) {
    const std::uint32_t lead = p[0];
    const auto available = end - p;
    const auto bits = [&p](int i) { return p[i] & 0x3FU; };
    const auto excess = [&p](int i) { return p[i] ^ 0x80U; };  // 0x40 or more: no continuation
    if (lead < 0xE0) {
        if (lead < 0xC2 || available < 2 || excess(1) >= 0x40) return kInvalid;
        const std::uint32_t character = (lead & 0x1F) << 6 | bits(1);
        p += 2;
        return character;
    }
    if (lead < 0xF0) {
        if (available < 3 || (excess(1) | excess(2)) >= 0x40) return kInvalid;
        const std::uint32_t character = (lead & 0x0F) << 12 | bits(1) << 6 | bits(2);
        p += 3;
        return character < 0x800 || IsSurrogate(character) ? kInvalid : character;
    }
    if (available < 4 || (excess(1) | excess(2) | excess(3)) >= 0x40) return kInvalid;
    const std::uint32_t character = (lead & 0x0F) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
    p += 4;
    return character < 0x10000 || character > 0x10FFFF ? kInvalid : character;
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

/// So many units of ASCII are converted one by one before a run of them is looked for.
constexpr std::ptrdiff_t kShortRun = 8;

/// Puts the units of valid UTF-8 into memory that has room for them, and returns their end; null for an
/// invalid text.
template <class Unit>
Unit* DecodeInto(const Byte* p, const Byte* end, Unit* out, const Unit* outEnd) {
    while (p != end) {
        if (*p >= 0x80) {
            const Byte* const before = p;
            if ((*p & 0xF0) == 0xE0) DecodeThrees(p, end, out, outEnd);
            if (p != before) continue;
            const std::uint32_t character = TakeSequence(p, end);
            if (character == kInvalid) return nullptr;
            out = PutUnits(character, out);
            continue;
        }
        const Byte* const stop = p + std::min(kShortRun, end - p);
        do {
            *out++ = static_cast<Unit>(*p++);
        } while (p != stop && *p < 0x80);
        if (p != stop) continue;
        const std::size_t ascii =
            WidenAscii(p, static_cast<std::size_t>(std::min(end - p, outEnd - out)), out);
        p += ascii;
        out += ascii;
    }
    return out;
}

/// The whole text in UTF-16, or nothing when it is invalid.
template <class String>
std::optional<String> Decode(std::string_view text) {
    const std::size_t ascii = CountAscii(text.data(), text.size());
    const std::size_t units = ascii + CountUnits(text.substr(ascii));
    const auto* const begin = reinterpret_cast<const Byte*>(text.data());
    bool isValid = true;
    String wide;
    FillString(wide, units, [&](auto* out) {
        const auto* const end = DecodeInto(begin, begin + text.size(), out, out + units);
        isValid = end != nullptr;
        return isValid ? static_cast<std::size_t>(end - out) : 0;
    });
    if (!isValid) return std::nullopt;
    return wide;
}

template <class Unit>
std::uint32_t Value(Unit unit) {
    return static_cast<std::make_unsigned_t<Unit>>(unit);
}

/// Puts a character's bytes, of which ASCII has its own faster way.
inline char* PutBytes(std::uint32_t character, char* out) {
    const auto tail = [character](unsigned shift) {
        return static_cast<char>(0x80 | (character >> shift & 0x3F));
    };
    if (character < 0x800) {
        out[0] = static_cast<char>(0xC0 | character >> 6);
        out[1] = tail(0);
        return out + 2;
    }
    if (character < 0x10000) {
        out[0] = static_cast<char>(0xE0 | character >> 12);
        out[1] = tail(6);
        out[2] = tail(0);
        return out + 3;
    }
    out[0] = static_cast<char>(0xF0 | character >> 18);
    out[1] = tail(12);
    out[2] = tail(6);
    out[3] = tail(0);
    return out + 4;
}

/// The character at `p`, which is moved past it; or kInvalid, `p` staying.
template <class Unit>
inline std::uint32_t TakeUnits(const Unit*& p, const Unit* end) {
    const std::uint32_t first = Value(p[0]);
    if (!IsSurrogate(first)) {
        if (first > 0xFFFF) return kInvalid;
        ++p;
        return first;
    }
    if (!IsHighSurrogate(first) || end - p < 2 || !IsLowSurrogate(Value(p[1]))) return kInvalid;
    const std::uint32_t character = 0x10000 + ((first & 0x3FF) << 10) + (Value(p[1]) & 0x3FF);
    p += 2;
    return character;
}

/// Where a conversion has read up to and written up to.
template <class Unit>
struct Converted {
    const Unit* from;
    char* to;
};

/// Puts the bytes of units into memory that has room for them, up to the first invalid unit.
template <class Unit>
Converted<Unit> EncodeInto(const Unit* p, const Unit* end, char* out, const char* outEnd) {
    while (p != end) {
        if (Value(*p) < 0x80) {
            const Unit* const stop = p + std::min(kShortRun, end - p);
            do {
                *out++ = static_cast<char>(*p++);
            } while (p != stop && Value(*p) < 0x80);
            if (p != stop) continue;
            const std::size_t ascii = NarrowAscii(p, static_cast<std::size_t>(end - p), out);
            p += ascii;
            out += ascii;
        } else if (Value(*p) < 0x800) {
            out = PutBytes(Value(*p++), out);
        } else {
            const Unit* const before = p;
            EncodeThrees(p, end, out, outEnd);
            if (p != before) continue;
            const std::uint32_t character = TakeUnits(p, end);
            if (character == kInvalid) return {p, out};
            out = PutBytes(character, out);
        }
    }
    return {p, out};
}

/// The longest valid beginning in UTF-8; `consumed` tells how many units that are.
template <class Unit>
std::string EncodePrefix(std::basic_string_view<Unit> text, std::size_t& consumed) {
    const Unit* p = text.data();
    const Unit* const end = p + text.size();
    std::string narrow;
    // Most texts are ASCII and need no counting; what begins otherwise is counted at once.
    if (!text.empty() && Value(text.front()) < 0x80) {
        FillString(narrow, text.size(), [&](char* out) { return NarrowAscii(p, text.size(), out); });
        p += narrow.size();
    }
    if (p != end) {
        const std::size_t prefix = narrow.size(), size = prefix + CountBytes(text.substr(prefix));
        FillString(narrow, size, [&](char* out) {
            const auto converted = EncodeInto(p, end, out + prefix, out + size);
            p = converted.from;
            return static_cast<std::size_t>(converted.to - out);
        });
    }
    consumed = static_cast<std::size_t>(p - text.data());
    return narrow;
}

/// The character whose bytes begin at `p`, which is moved past it; or kInvalid, `p` staying.
template <bool kBigEndian>
std::uint32_t TakeUnitBytes(const char*& p, const char* end) {
    const char16_t units[] = {UnitOfBytes<kBigEndian>(p),
                              end - p < 4 ? char16_t{0} : UnitOfBytes<kBigEndian>(p + 2)};
    const char16_t* unit = units;
    const std::uint32_t character = TakeUnits(unit, units + 2);
    p += 2 * (unit - units);
    return character;
}

/// Puts the units of these bytes as UTF-8, up to the first invalid one, which `p` is moved to. Returns how
/// many bytes that gives.
template <bool kBigEndian>
std::size_t EncodeUnits(const char*& p, const char* end, char* narrow) {
    char* out = narrow;
    while (p != end) {
        const std::size_t run = NarrowAsciiBytes<kBigEndian>(p, static_cast<std::size_t>(end - p) / 2, out);
        p += 2 * run;
        out += run;
        while (p != end && UnitOfBytes<kBigEndian>(p) >= 0x80) {
            const std::uint32_t character = TakeUnitBytes<kBigEndian>(p, end);
            if (character == kInvalid) return static_cast<std::size_t>(out - narrow);
            out = PutBytes(character, out);
        }
    }
    return static_cast<std::size_t>(out - narrow);
}

template <class Unit>
std::optional<std::string> Encode(std::basic_string_view<Unit> text) {
    std::size_t consumed = 0;
    std::string narrow = EncodePrefix(text, consumed);
    if (consumed != text.size()) return std::nullopt;
    return narrow;
}

}  // namespace

std::optional<std::wstring> Utf8ToWide(std::string_view text) { return Decode<std::wstring>(text); }

std::optional<std::string> WideToUtf8(std::wstring_view text) { return Encode(text); }

std::optional<std::string> Utf16ToUtf8(std::u16string_view text) { return Encode(text); }

std::optional<std::u16string> Utf8ToUtf16(std::string_view text) { return Decode<std::u16string>(text); }

std::wstring ToWide(std::string_view text) {
    if (auto wide = Utf8ToWide(text)) return std::move(*wide);
    return Utf8ToWide(RepairUtf8(text)).value_or(std::wstring());
}

std::string ToUtf8(std::wstring_view text) {
    if (auto narrow = WideToUtf8(text)) return std::move(*narrow);
    std::wstring repaired(text);
    const wchar_t* p = repaired.data();
    const wchar_t* const end = p + repaired.size();
    while (p != end) {
        const auto at = static_cast<std::size_t>(p - repaired.data());
        if (TakeUnits(p, end) != kInvalid) continue;
        repaired[at] = kWideReplacement;
        ++p;
    }
    return WideToUtf8(repaired).value_or(std::string());
}

std::size_t FindInvalidUtf8(std::string_view text) {
    const auto* const begin = reinterpret_cast<const Byte*>(text.data());
    const Byte* const end = begin + text.size();
    for (const Byte* p = begin; p != end;) {
        if (end - p >= 8 && (LoadWord(p) & 0x8080808080808080) == 0) {
            p += 8;
        } else if (*p < 0x80) {
            ++p;
        } else if (const Byte* const start = p; TakeSequence(p, end) == kInvalid) {
            return static_cast<std::size_t>(start - begin);
        }
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
        text.remove_prefix(SubpartLength(reinterpret_cast<const Byte*>(text.data()), text.size()));
    }
}

bool Utf16Decoder::Add(std::string_view bytes, std::string& text) {
    while (!m_hasFailed && !bytes.empty()) {
        if (m_keptSize == 0) {
            const std::size_t taken = std::min(bytes.size(), 2 * kUnits);
            AddUnits(bytes.substr(0, taken), text);
            bytes.remove_prefix(taken);
            continue;
        }
        m_kept[m_keptSize++] = bytes.front();
        bytes.remove_prefix(1);
        if (m_keptSize % 2 == 0) AddKept(text);
    }
    return !m_hasFailed;
}

void Utf16Decoder::AddKept(std::string& text) {
    const std::string kept(m_kept, std::exchange(m_keptSize, 0));
    AddUnits(kept, text);
}

void Utf16Decoder::AddUnits(std::string_view bytes, std::string& text) {
    char narrow[3 * kUnits];
    const char* p = bytes.data();
    const char* const end = p + bytes.size() / 2 * 2;
    text.append(narrow, m_bigEndian ? EncodeUnits<true>(p, end, narrow) : EncodeUnits<false>(p, end, narrow));
    const auto left = static_cast<std::size_t>(end - p);
    const char16_t unit = left == 0 ? u'\0' : m_bigEndian ? UnitOfBytes<true>(p) : UnitOfBytes<false>(p);
    m_hasFailed = left > 2 || (left == 2 && !IsHighSurrogate(unit));
    if (m_hasFailed) return;
    m_keptSize = left + bytes.size() % 2;
    std::memcpy(m_kept, p, m_keptSize);
}

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian) {
    constexpr std::size_t kProbe = 16 * 1024;
    Utf16Decoder decoder(bigEndian);
    std::string text;
    if (!decoder.Add(bytes.substr(0, kProbe), text) || bytes.size() <= kProbe) return text;
    // The beginning tells how much the rest will need.
    text.reserve(text.size() * (bytes.size() / kProbe + 1) + kProbe);
    decoder.Add(bytes.substr(kProbe), text);
    return text;
}

std::optional<std::string> Utf8ToUtf16Bytes(std::string_view text, bool bigEndian) {
    const auto units = Utf8ToUtf16(text);
    if (!units) return std::nullopt;
    std::string bytes(2 * units->size(), '\0');
    const unsigned first = bigEndian ? 8 : 0;
    for (std::size_t i = 0; i < units->size(); ++i) {
        bytes[2 * i] = static_cast<char>((*units)[i] >> first);
        bytes[2 * i + 1] = static_cast<char>((*units)[i] >> (8 - first));
    }
    return bytes;
}

}  // namespace quillon::base
