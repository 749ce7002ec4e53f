#include <codecvt>
#include <cstdint>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>

#include "Require.h"
#include "base/Utf.h"

// The conversions against the standard library's, which takes surrogates in UTF-8
// for characters: a text that holds one is invalid whatever it says.
namespace {

using namespace quillon;
using Converter = std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>>;

bool HoldsSurrogate(const std::string& text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == '\xED' && static_cast<unsigned char>(text[i + 1]) >= 0xA0) return true;
    }
    return false;
}

// It leaves out a character that the end of the text cuts.
bool IsWhole(const Converter& converter, std::size_t size) { return converter.converted() == size; }

std::optional<std::wstring> OracleWide(const std::string& text) {
    if (HoldsSurrogate(text)) return std::nullopt;
    try {
        Converter converter;
        std::wstring wide = converter.from_bytes(text);
        return IsWhole(converter, text.size()) ? std::optional(wide) : std::nullopt;
    } catch (const std::range_error&) {
        return std::nullopt;
    }
}

std::optional<std::string> OracleNarrow(const std::wstring& text) {
    try {
        Converter converter;
        std::string narrow = converter.to_bytes(text);
        return IsWhole(converter, text.size()) ? std::optional(narrow) : std::nullopt;
    } catch (const std::range_error&) {
        return std::nullopt;
    }
}

bool HoldsLoneSurrogate(const std::wstring& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] & 0xF800) != 0xD800) continue;
        if ((text[i] & 0x400) != 0 || i + 1 == text.size() || (text[i + 1] & 0xFC00) != 0xDC00) return true;
        ++i;
    }
    return false;
}

void CheckNarrow(const std::string& text) {
    const auto wide = base::Utf8ToWide(text);
    Require(wide == OracleWide(text));
    const std::size_t invalid = base::FindInvalidUtf8(text);
    Require(wide.has_value() == (invalid == std::string::npos));
    Require(base::Utf8ToWide(text.substr(0, invalid)).has_value());

    const std::string repaired = base::RepairUtf8(text);
    Require(base::FindInvalidUtf8(repaired) == std::string::npos);
    Require(repaired.compare(0, invalid, text, 0, invalid) == 0);
    Require(base::ToUtf8(base::ToWide(text)) == repaired);
    if (!wide) return;
    Require(repaired == text);
    Require(base::WideToUtf8(*wide) == text);
    for (const bool bigEndian : {false, true}) {
        const auto bytes = base::Utf8ToUtf16Bytes(text, bigEndian);
        Require(bytes && bytes->size() == 2 * wide->size());
        Require(base::Utf16BytesToUtf8(*bytes, bigEndian) == text);
    }
}

void CheckWide(const std::string& bytes) {
    std::wstring wide;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto byte = [&](std::size_t at) {
            return static_cast<unsigned>(static_cast<unsigned char>(bytes[at]));
        };
        wide.push_back(static_cast<wchar_t>(byte(i) | byte(i + 1) << 8));
    }
    const auto narrow = base::WideToUtf8(wide);
    Require(narrow.has_value() == !HoldsLoneSurrogate(wide));
    const std::string prefix = base::Utf16BytesToUtf8(bytes, false);
    Require(base::FindInvalidUtf8(prefix) == std::string::npos);
    Require(base::ToUtf8(wide).compare(0, prefix.size(), prefix) == 0);
    if (!narrow) return;
    Require(narrow == OracleNarrow(wide));
    Require(prefix == *narrow);
    Require(base::Utf8ToWide(*narrow) == wide);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    CheckNarrow(bytes);
    CheckWide(bytes);
    return 0;
}
