#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// The library's toolbox for text. Narrow strings are UTF-8 unless an operation
/// says otherwise; wide strings hold UTF-16, one unit per `wchar_t` whatever its
/// size. White space is space, tab, line feed, vertical tab, form feed and
/// carriage return; case mappings change only A-Z and a-z, unit by unit, so
/// multi-byte sequences are left alone (the C locale, which the library never
/// changes). Operations that take `std::string&` change it and return it. Every
/// operation may run on any thread, and needs time linear in its input.
class QUILLON_API StringUtils {
public:
    StringUtils() = delete;

    /// Carriage return and line feed.
    static const char* const StartNewLine;
    static std::string NewLineString();

    // --- UTF-8 and UTF-16 ---

    /// Invalid input gives the empty string and one Error entry.
    static std::wstring NarrowStringToWide(const std::string& text);
    /// Invalid input (a lone surrogate) gives the empty string and one Error entry.
    static std::string WideStringToNarrow(const std::wstring& text);
    /// As WideStringToNarrow, but invalid input throws std::range_error.
    static std::string Utf16LeToUtf8(const std::wstring& text);
    /// Number of UTF-16 units of NarrowStringToWide(text).
    static unsigned long long Utf8Count(const std::string& text);
    /// Always true. `buffer` gets a new array of UTF-16 units without a
    /// terminating zero, which the caller releases with `delete[]`; `byteCount`
    /// twice the number of units.
    static bool StringToUtf16le(const std::string& text, std::uint16_t*& buffer, std::size_t& byteCount);
    static bool StringToUtf16le(const std::wstring& text, std::uint16_t*& buffer, std::size_t& byteCount);
    /// The system's ANSI code page, not UTF-8. Embedded zeros are kept; null gives the empty text.
    static std::string ConvertBSTRToNarrowString(BSTR text);

    // --- Case and trimming ---

    static std::string ToLowercase(const std::string& text);
    static std::wstring ToLowercase(const std::wstring& text);
    static std::string ToUppercase(const std::string& text);
    static std::wstring ToUppercase(const std::wstring& text);
    static std::string& StringToLowercase(std::string& text);
    static std::wstring& StringToLowercase(std::wstring& text);
    static std::string& StringToUppercase(std::string& text);
    static std::wstring& StringToUppercase(std::wstring& text);

    static std::string& LeftTrim(std::string& text);
    static std::wstring& LeftTrim(std::wstring& text);
    static std::string& RightTrim(std::string& text);
    static std::wstring& RightTrim(std::wstring& text);
    static std::string& Trim(std::string& text);
    static std::wstring& Trim(std::wstring& text);
    /// Removes every leading and every trailing double quote, not only one pair.
    static std::string& TrimQuotes(std::string& text);
    static std::string& TrimTrailing(std::string& text, char character);
    static std::wstring& TrimTrailing(std::wstring& text, wchar_t character);
    /// Removes white space everywhere.
    static std::string& TrimAllSpaces(std::string& text);
    static std::wstring& TrimAllSpaces(std::wstring& text);
    /// Removes trailing line feeds, form feeds and carriage returns, not vertical tabs.
    static std::string& TrimTrailingNewlineCharacters(std::string& text);
    static std::wstring& TrimTrailingNewlineCharacters(std::wstring& text);
    /// Removes trailing backslashes; slashes stay.
    static std::string& TrimTrailingPathSeparatorCharacters(std::string& text);
    static std::wstring& TrimTrailingPathSeparatorCharacters(std::wstring& text);
    /// Every run of white space, also at the ends, becomes one space.
    static std::string CollapseWhitespace(const std::string& text);
    /// Cuts a text longer than `limit` right after its last `character` at an
    /// index below `limit`. False, and no change, when there is nothing to cut.
    static bool Snip(std::string& text, char character, unsigned long long limit);
    /// The first `maximum` characters, followed by "..." when the text was longer.
    static std::string Truncate(const std::string& text, unsigned long long maximum);

    // --- Comparing and searching ---

    static bool CompareCaseSensitive(const std::string& a, const std::string& b);
    static bool CompareCaseSensitive(const std::wstring& a, const std::wstring& b);
    static bool CompareCaseInsensitive(const std::string& a, const std::string& b);
    static bool CompareCaseInsensitive(const std::wstring& a, const std::wstring& b);
    static bool StartsWith(const std::string& text, const std::string& prefix);
    static bool EndsWith(const std::string& text, const std::string& suffix, bool caseSensitive);
    static bool EndsWith(const std::wstring& text, const std::wstring& suffix, bool caseSensitive);
    /// Index of the first match, all bits set when there is none. An empty needle
    /// is found at 0, but not in an empty haystack.
    static unsigned long long FindCaseInsensitive(const std::string& haystack, const std::string& needle);
    static unsigned long long FindCaseInsensitive(const std::wstring& haystack, const std::wstring& needle);
    /// Equality, not an order: the same number of components, each equal as a
    /// decimal number or else as a text ("1.2" and "1.02" are equal, "1.2.0" differs).
    static bool CompareDottedVersions(const std::string& a, const std::string& b);
    static bool IsAllDigits(const std::string& text);
    /// Decimal digits only: signs, blanks and the empty text give 0 with the flag
    /// false. Values past the range give the largest int. A null `isNumber` is allowed.
    static int StringToInt(const std::string& text, bool* isNumber = nullptr);
    static int StringToInt(const std::wstring& text, bool* isNumber = nullptr);

    // --- Replacing, splitting, joining ---

    /// Replaces `find`, left to right, inserted text never being searched again.
    /// True when anything was replaced; an empty `find` is not found.
    static bool ReplaceStringInPlace(std::string& text, const std::string& find,
                                     const std::string& replacement, bool firstOnly);
    static bool ReplaceStringInPlace(std::wstring& text, const std::wstring& find,
                                     const std::wstring& replacement, bool firstOnly);
    static bool ReplaceStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                    const std::string& replacement, bool firstOnly);
    static bool ReplaceStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                    const std::wstring& replacement, bool firstOnly);
    /// Deletes `find`, starting again at the beginning after each deletion, so that
    /// deleting "ab" from "aabb" leaves nothing. True when anything was deleted.
    static bool DeleteStringInPlace(std::string& text, const std::string& find, bool firstOnly);
    static bool DeleteStringInPlace(std::wstring& text, const std::wstring& find, bool firstOnly);
    static bool DeleteStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                   bool firstOnly);
    static bool DeleteStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                   bool firstOnly);

    /// Every piece, empty ones included; `pieces` is cleared first.
    static void SplitByChar(const std::string& text, char separator, std::vector<std::string>& pieces);
    static void SplitByChar(const std::wstring& text, wchar_t separator, std::vector<std::wstring>& pieces);
    /// An empty separator gives the whole text as one piece.
    static void SplitByString(const std::string& text, const std::string& separator,
                              std::vector<std::string>& pieces, bool skipEmpty);
    static std::string StringVecToString(const std::vector<std::string>& pieces, char separator);

    // --- Escaping and dumps ---

    /// Doubles backslashes, then puts a backslash before every double quote.
    static std::string ProtectInQuotedString(const std::string& text);
    static std::wstring ProtectInQuotedString(const std::wstring& text);
    /// Doubles percent signs, so that the text can stand as a printf format.
    static std::string ProtectPercents(const char* text);
    static std::string ProtectPercents(const std::string& text);
    /// Escapes the blank and !#$&'()*+,;=@[] and passes every other byte.
    static std::string UrlEncode(const std::string& text);
    /// Undoes %XX; anything else, "+" included, is copied.
    static std::string UrlDecode(const std::string& text);
    /// Two lower-case digits a byte.
    static std::string ByteArrayToHexString(const unsigned char* bytes, std::size_t count);
    /// False for an odd length (`count` untouched), a character that is no digit,
    /// or a full buffer; `count` then tells how many bytes were stored.
    static bool HexStringToByteArray(const std::string& hex, unsigned char* buffer, std::size_t bufferSize,
                                     std::size_t& count);
    /// Bytes 32-126 as they are, every other byte as '.'.
    static std::string ByteArrayToAsciiChars(const unsigned char* bytes, std::size_t count);

    // --- Formatting and system texts ---

    /// At most 9,999 characters. A format that fails gives "Invalid Log format: " and the format.
    static std::string Format(const char* format, std::va_list arguments) QUILLON_PRINTF(1, 0);
    /// %NAME% references expanded by the system; unknown names stay. The narrow
    /// form is in the system's ANSI code page. A failure gives the text unchanged.
    static std::string ExpandEnvironmentVariables(const std::string& text);
    static std::wstring ExpandEnvironmentVariables(const std::wstring& text);
    /// `count` blanks, at most 40; never allocates.
    static const char* IndentBy(unsigned int count);
    static const char* BoolValAsString(bool value);
    /// "(5/0X5) Access is denied. " for code 5, empty for 0, "(unknown error code
    /// 5/0X5)" with a Debug entry when the system has no text.
    static std::string GetErrorAsString(std::int32_t code);
    static std::string GetErrorCodeAsString(std::int32_t code);
    /// GetErrorAsString of the calling thread's last error.
    static std::string GetLastErrorAsString();
    /// As GetErrorAsString, white space collapsed; statuses of zero or more give the empty text.
    static std::string GetNtstatusAsString(std::int32_t status);
};

}  // namespace quillon
