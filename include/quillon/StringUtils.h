#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Converts, trims, searches, splits and escapes text, and turns system codes into text.
///
/// Narrow strings are UTF-8 unless an operation says otherwise; wide strings hold UTF-16, one
/// code unit per `wchar_t` whatever its size. Embedded NULs are ordinary characters. White
/// space is space, tab, line feed, vertical tab, form feed and carriage return. Case mappings
/// change only A-Z and a-z, code unit by code unit, so multi-byte sequences are left alone, also
/// where the host has set another locale; "case-insensitive" means exactly this mapping.
/// Operations that take `std::string&` change it in place and return it. Where both a narrow
/// and a wide form exist, they behave alike.
///
/// All operations are thread-safe, hold no lock and need time linear in their input. Only where
/// it is said does one log or throw; entries go to the registered logger.
///
/// @code
/// std::string line = "  key = a, b ,,c \r\n";
/// std::vector<std::string> pieces;
/// StringUtils::SplitByChar(StringUtils::Trim(line), ',', pieces);  // "key = a", " b ", "", "c"
/// for (std::string& piece : pieces) StringUtils::Trim(piece);
/// std::cout << StringUtils::StringVecToString(pieces, ';') << '\n';  // key = a;b;;c
/// const std::wstring wide = StringUtils::NarrowStringToWide(line);   // empty if it is not UTF-8
/// std::cout << StringUtils::GetErrorAsString(5) << wide.size() << '\n';
/// @endcode
class QUILLON_API StringUtils {
public:
    StringUtils() = delete;

    /// Holds carriage return and line feed, on every system; NewLineString() returns a copy.
    static const char* const StartNewLine;
    static std::string NewLineString();

    // --- UTF-8 and UTF-16 ---

    /// Converts UTF-8 to UTF-16. Invalid input gives the empty string and the Error entry
    /// "Invalid narrow string for conversion to wide"; overlong forms and encoded surrogates
    /// are invalid.
    static std::wstring NarrowStringToWide(const std::string& text);
    /// Converts UTF-16 to UTF-8. Invalid input (a surrogate without its partner) gives the
    /// empty string and the Error entry "Invalid wide string for conversion to narrow".
    static std::string WideStringToNarrow(const std::wstring& text);
    /// Converts as WideStringToNarrow() does, but invalid input throws std::range_error and
    /// logs nothing.
    static std::string Utf16LeToUtf8(const std::wstring& text);
    /// Returns the number of UTF-16 code units of NarrowStringToWide(text), 2 for a character
    /// beyond U+FFFF; invalid input counts 0 and is logged.
    static unsigned long long Utf8Count(const std::string& text);
    /// Allocates an array of the text's UTF-16 code units, without a terminating NUL, which the
    /// caller releases with `delete[]`. `byteCount` receives twice the number of units. The
    /// code units are in the machine's byte order. Returns true always; invalid UTF-8 is logged
    /// as by NarrowStringToWide() and gives an array of no units, which is released too.
    static bool StringToUtf16le(const std::string& text, std::uint16_t*& buffer, std::size_t& byteCount);
    static bool StringToUtf16le(const std::wstring& text, std::uint16_t*& buffer, std::size_t& byteCount);
    /// Converts to the system's ANSI code page, not to UTF-8; characters that the page does not
    /// have become its default character. Null gives the empty text. The caller keeps `text`.
    static std::string ConvertBSTRToNarrowString(windows::BSTR text);

    // --- Case and trimming ---

    /// Returns a copy whose letters A-Z are in lower case.
    static std::string ToLowercase(const std::string& text);
    static std::wstring ToLowercase(const std::wstring& text);
    /// Returns a copy whose letters a-z are in upper case.
    static std::string ToUppercase(const std::string& text);
    static std::wstring ToUppercase(const std::wstring& text);
    /// Changes the case of the text itself.
    static std::string& StringToLowercase(std::string& text);
    static std::wstring& StringToLowercase(std::wstring& text);
    static std::string& StringToUppercase(std::string& text);
    static std::wstring& StringToUppercase(std::wstring& text);

    /// Removes white space at the start, at the end, or at both ends.
    static std::string& LeftTrim(std::string& text);
    static std::wstring& LeftTrim(std::wstring& text);
    static std::string& RightTrim(std::string& text);
    static std::wstring& RightTrim(std::wstring& text);
    static std::string& Trim(std::string& text);
    static std::wstring& Trim(std::wstring& text);
    /// Removes every leading and every trailing double quote, not only one pair.
    static std::string& TrimQuotes(std::string& text);
    /// Removes every `character` at the end.
    static std::string& TrimTrailing(std::string& text, char character);
    static std::wstring& TrimTrailing(std::wstring& text, wchar_t character);
    /// Removes white space everywhere, also between other characters.
    static std::string& TrimAllSpaces(std::string& text);
    static std::wstring& TrimAllSpaces(std::wstring& text);
    /// Removes line feeds, form feeds and carriage returns at the end; a vertical tab stops it.
    static std::string& TrimTrailingNewlineCharacters(std::string& text);
    static std::wstring& TrimTrailingNewlineCharacters(std::wstring& text);
    /// Removes backslashes at the end, also that of "C:\"; slashes stay.
    static std::string& TrimTrailingPathSeparatorCharacters(std::string& text);
    static std::wstring& TrimTrailingPathSeparatorCharacters(std::wstring& text);
    /// Returns a copy in which every run of white space, also at the ends, is one space.
    static std::string CollapseWhitespace(const std::string& text);
    /// Cuts a text longer than `limit` bytes right after its last `character` at an index below
    /// `limit`, as to end at a word. Returns false, and changes nothing, when the text is short
    /// enough or has no such character.
    static bool Snip(std::string& text, char character, unsigned long long limit);
    /// Returns the first `maximum` bytes, followed by "..." when the text was longer. A
    /// character of several bytes may be cut.
    static std::string Truncate(const std::string& text, unsigned long long maximum);

    // --- Comparing and searching ---

    /// Returns whether the texts are equal, code unit by code unit.
    static bool CompareCaseSensitive(const std::string& a, const std::string& b);
    static bool CompareCaseSensitive(const std::wstring& a, const std::wstring& b);
    /// Returns whether the texts are equal but for the case of A-Z.
    static bool CompareCaseInsensitive(const std::string& a, const std::string& b);
    static bool CompareCaseInsensitive(const std::wstring& a, const std::wstring& b);
    /// Returns whether the text begins with `prefix`, case-sensitively; true for an empty one.
    static bool StartsWith(const std::string& text, const std::string& prefix);
    /// Returns whether the text ends with `suffix`; true for an empty one.
    static bool EndsWith(const std::string& text, const std::string& suffix, bool caseSensitive);
    static bool EndsWith(const std::wstring& text, const std::wstring& suffix, bool caseSensitive);
    /// Returns the index of the first match, in code units; all bits set when there is none. An
    /// empty needle is found at 0, but not in an empty haystack.
    static unsigned long long FindCaseInsensitive(const std::string& haystack, const std::string& needle);
    static unsigned long long FindCaseInsensitive(const std::wstring& haystack, const std::wstring& needle);
    /// Returns whether two texts have the same number of components, each equal as a decimal
    /// number or else as a text: "1.2" equals "1.02" but not "1.2.0", and an empty component
    /// equals 0. It tells no order; class Version does.
    static bool CompareDottedVersions(const std::string& a, const std::string& b);
    /// Returns whether every byte is a digit 0-9; false for the empty text.
    static bool IsAllDigits(const std::string& text);
    /// Returns the value of a text of decimal digits only, at most the largest int; leading
    /// zeros do not make it octal. Signs, blanks and the empty text give 0 and set `*isNumber`
    /// to false. `isNumber` may be null. The wide form logs an Error entry for invalid UTF-16.
    static int StringToInt(const std::string& text, bool* isNumber = nullptr);
    static int StringToInt(const std::wstring& text, bool* isNumber = nullptr);

    // --- Replacing, splitting, joining ---

    /// Replaces `find`, every occurrence or only the first, from left to right; inserted text
    /// is not searched again. Returns whether anything was replaced; an empty `find` never is.
    static bool ReplaceStringInPlace(std::string& text, const std::string& find,
                                     const std::string& replacement, bool firstOnly);
    static bool ReplaceStringInPlace(std::wstring& text, const std::wstring& find,
                                     const std::wstring& replacement, bool firstOnly);
    /// Replaces in the same way whatever the case of `find`'s letters in the text.
    static bool ReplaceStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                    const std::string& replacement, bool firstOnly);
    static bool ReplaceStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                    const std::wstring& replacement, bool firstOnly);
    /// Deletes `find`, only the first occurrence or until there is none left: each search
    /// starts again at the beginning, so deleting "ab" from "aabb" leaves nothing. Returns
    /// whether anything was deleted; an empty `find` never is.
    static bool DeleteStringInPlace(std::string& text, const std::string& find, bool firstOnly);
    static bool DeleteStringInPlace(std::wstring& text, const std::wstring& find, bool firstOnly);
    /// Deletes in the same way whatever the case of `find`'s letters in the text.
    static bool DeleteStringInPlaceCaseInsensitive(std::string& text, const std::string& find,
                                                   bool firstOnly);
    static bool DeleteStringInPlaceCaseInsensitive(std::wstring& text, const std::wstring& find,
                                                   bool firstOnly);

    /// Replaces the content of `pieces` by the text's pieces between separators, empty ones
    /// included; the empty text gives one empty piece. `text` may be an element of `pieces`.
    static void SplitByChar(const std::string& text, char separator, std::vector<std::string>& pieces);
    static void SplitByChar(const std::wstring& text, wchar_t separator, std::vector<std::wstring>& pieces);
    /// Splits at a text of any length, matches not overlapping; `skipEmpty` leaves empty pieces
    /// out. An empty separator gives the whole text as one piece, whatever `skipEmpty` says.
    static void SplitByString(const std::string& text, const std::string& separator,
                              std::vector<std::string>& pieces, bool skipEmpty);
    /// Returns the pieces joined by the separator; it is not escaped inside a piece.
    static std::string StringVecToString(const std::vector<std::string>& pieces, char separator);

    // --- Escaping and dumps ---

    /// Returns a copy with a backslash before every backslash and every double quote.
    static std::string ProtectInQuotedString(const std::string& text);
    static std::wstring ProtectInQuotedString(const std::wstring& text);
    /// Returns a copy with every percent sign doubled, so that the text can stand in a printf
    /// format. The pointer must not be null.
    static std::string ProtectPercents(const char* text);
    static std::string ProtectPercents(const std::string& text);
    /// Returns a copy in which the blank and each of !#$&'()*+,;=@[] is "%XX", in upper-case
    /// digits. Every other byte stays, '%', '/', ':' and '?' included, so that a whole URL can
    /// be given; it follows that UrlDecode() is no exact inverse.
    static std::string UrlEncode(const std::string& text);
    /// Returns a copy in which each %XX is the byte it stands for, the digits in either case;
    /// anything else, "+" included, is copied. The result may hold NULs and need not be UTF-8.
    static std::string UrlDecode(const std::string& text);
    /// Returns two lower-case digits a byte, without separators.
    static std::string ByteArrayToHexString(const unsigned char* bytes, std::size_t count);
    /// Reads two digits a byte, in either case, into the caller's buffer. Returns false for an
    /// odd length (`count` is untouched), for a character that is no digit and for a buffer
    /// that is too small; `count` then tells how many bytes were stored.
    [[nodiscard]] static bool HexStringToByteArray(const std::string& hex, unsigned char* buffer,
                                                   std::size_t bufferSize, std::size_t& count);
    /// Returns the bytes 32-126 as they are and '.' for every other one, as for a dump.
    static std::string ByteArrayToAsciiChars(const unsigned char* bytes, std::size_t count);

    // --- Formatting and system texts ---

    /// Formats as vsnprintf() does in the C locale, and returns at most 9,999 bytes of it. A
    /// format that fails gives "Invalid Log format: " and the format. `arguments` is used up.
    static std::string Format(const char* format, std::va_list arguments) QUILLON_PRINTF(1, 0);
    /// Returns a copy in which the system has expanded %NAME% references; unknown names stay,
    /// and the text ends at its first NUL. The narrow form is in the system's ANSI code page. A
    /// failure gives the text unchanged and is not logged.
    static std::string ExpandEnvironmentVariables(const std::string& text);
    static std::wstring ExpandEnvironmentVariables(const std::wstring& text);
    /// Returns `count` blanks, at most 40. The text is static: the caller frees nothing.
    static const char* IndentBy(unsigned int count);
    /// Returns "true" or "false", static texts.
    static const char* BoolValAsString(bool value);
    /// Returns the system's text of an error code, such as "(5/0X5) Access is denied. " for 5
    /// (ERROR_ACCESS_DENIED), in the user's language and as the system ends it. 0 gives the
    /// empty text. A code without a text gives "(unknown error code 5/0X5)" and a Debug entry.
    static std::string GetErrorAsString(std::int32_t code);
    /// Returns the same as GetErrorAsString(), under the name that modules know.
    static std::string GetErrorCodeAsString(std::int32_t code);
    /// Returns GetErrorAsString() of the calling thread's last error; to be called before
    /// anything else that may set that error.
    static std::string GetLastErrorAsString();
    /// Returns the text of an NTSTATUS in the form of GetErrorAsString(), white space
    /// collapsed. Success and informational statuses (0 and more) give the empty text; one
    /// without a text gives "(unknown NTSTATUS code ...)". Nothing is logged.
    static std::string GetNtstatusAsString(std::int32_t status);
};

}  // namespace quillon
