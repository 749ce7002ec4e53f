#include "base/PrintfFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/Utf.h"
#include "base/Utf8Cut.h"

namespace quillon::base {

namespace {

constexpr int kRefused = -1;
constexpr std::size_t kMostOfNumber = 10'000;  // characters, of a width or precision
constexpr char kGroups = '\'';  // the flag for the locale's separators, of which the C locale has none
constexpr std::string_view kKindsOfReals = "aAeEfFgG";

/// One conversion of a format, such as "%-08.3lld".
struct Conversion {
    std::string_view flags;
    std::optional<long long> width, precision;
    bool takesWidth = false, takesPrecision = false;  // "*"
    bool isLeft = false;
    std::string_view length;
    char kind = '\0';

    [[nodiscard]] bool IsWideText() const {
        return kind == 'S' || kind == 'C' ||
               ((length == "l" || length == "w") && (kind == 's' || kind == 'c'));
    }
    /// "I", "I64", "I32" and "w", which other runtimes take for something else: the arguments behind would
    /// shift.
    [[nodiscard]] bool HasLengthOfWindows() const {
        return length.find_first_of("Iw") != std::string_view::npos;
    }
    [[nodiscard]] bool IsText() const { return kind == 's' || kind == 'S'; }
    [[nodiscard]] bool IsReal() const { return kKindsOfReals.find(kind) != std::string_view::npos; }
    /// Whether a C runtime may follow it: without taking more memory than the result needs, without asking
    /// the locale, and without another conversion behind a number of an argument ("%1$n").
    [[nodiscard]] bool IsPlain(long long most) const {
        return !takesWidth && !takesPrecision && width.value_or(0) <= most && precision.value_or(0) <= most &&
               !IsWideText() && !HasLengthOfWindows() && !IsReal() &&
               flags.find(kGroups) == std::string_view::npos && kind != 'n' && kind != '$';
    }
};

std::string_view TakeAnyOf(const char*& at, const char* set) {
    const std::size_t count = std::strspn(at, set);
    at += count;
    return {at - count, count};
}

/// Digits, of which as many count as no memory can hold.
std::optional<long long> TakeNumber(const char*& at) {
    if (!IsDigit(*at)) return std::nullopt;
    constexpr long long kHuge = 1'000'000'000;
    long long number = 0;
    for (; IsDigit(*at); ++at) number = std::min(number * 10 + (*at - '0'), kHuge);
    return number;
}

/// Returns how many characters say how long the argument is.
std::size_t LengthOfLength(std::string_view text) {
    for (const std::string_view ofWindows : {"I64", "I32", "I"})
        if (text.starts_with(ofWindows)) return ofWindows.size();
    return std::min(text.find_first_not_of("hljztLqw"), text.size());
}

/// Reads what stands behind a percent sign.
Conversion TakeConversion(const char*& at) {
    Conversion conversion;
    conversion.flags = TakeAnyOf(at, "-+ #0'");
    conversion.isLeft = conversion.flags.find('-') != std::string_view::npos;
    conversion.takesWidth = !TakeAnyOf(at, "*").empty();
    conversion.width = TakeNumber(at);
    if (*at == '.') {
        ++at;
        conversion.takesPrecision = !TakeAnyOf(at, "*").empty();
        conversion.precision =
            conversion.takesPrecision ? std::nullopt : std::optional(TakeNumber(at).value_or(0));
    }
    const std::string_view rest = at;
    conversion.length = rest.substr(0, LengthOfLength(rest));
    at += conversion.length.size();
    conversion.kind = *at;
    if (*at != '\0') ++at;
    return conversion;
}

/// Behind the sign and the "0x" of a number.
std::size_t StartOfDigits(std::string_view number) {
    std::size_t start = std::min(number.find_first_not_of("+- "), number.size());
    if (number.substr(start, 2) == "0x" || number.substr(start, 2) == "0X") start += 2;
    return start;
}

/// Replaces what stands behind the first digits of a real number and is neither digit nor letter.
void SetPoint(std::pmr::string& number) {
    const auto isDigitOrLetter = [](char c) { return IsDigit(c) || IsLetter(c); };
    auto point = number.begin() + static_cast<std::ptrdiff_t>(StartOfDigits(number));
    point = std::find_if_not(point, number.end(), isDigitOrLetter);
    if (point == number.end() || *point == '+' || *point == '-') return;  // the sign of the power
    number.replace(point, std::find_if(point, number.end(), isDigitOrLetter), 1, '.');
}

bool IsPlain(const char* format, long long most) {
    for (const char* at = std::strchr(format, '%'); at != nullptr; at = std::strchr(at, '%')) {
        ++at;
        if (!TakeConversion(at).IsPlain(most)) return false;
    }
    return true;
}

/// What a number is written in: one of the usual length takes no memory.
class NumberMemory : public std::pmr::monotonic_buffer_resource {
public:
    NumberMemory() : monotonic_buffer_resource(m_usual, sizeof m_usual) {}

private:
    char m_usual[512];
};

/// Formats one piece after the other, and counts what does not fit.
class Formatter {
public:
    /// The arguments are consumed; the caller ends them.
    Formatter(char* buffer, std::size_t size, std::va_list& arguments)
        : m_buffer(buffer), m_size(size), m_most(size), m_arguments(arguments) {}
    /// Writes to a stream, which everything fits into.
    Formatter(std::FILE* stream, std::va_list& arguments)
        : m_stream(stream), m_most(INT32_MAX), m_arguments(arguments) {}

    int Follow(const char* format) {
        for (;;) {
            const std::size_t literal = std::strcspn(format, "%");
            Put({format, literal});
            format += literal;
            if (*format == '\0') break;
            ++format;
            if (!Convert(TakeConversion(format))) return kRefused;
        }
        return End();
    }

    /// Follows a format of texts, characters and decimal numbers as they are, which most entries of a log
    /// have. Nothing for another one: it has to be followed from its beginning.
    std::optional<int> FollowSimple(const char* format) {
        while (const char* const conversion = std::strchr(format, '%')) {
            Put({format, static_cast<std::size_t>(conversion - format)});
            format = conversion + 1;
            if (!PutSimple(format)) return std::nullopt;
        }
        Put(format);
        return End();
    }

private:
    int End() {
        if (m_size > 0) m_buffer[std::min(m_length, m_size - 1)] = '\0';
        return static_cast<int>(std::min<std::size_t>(m_length, INT32_MAX));
    }

    bool PutSimple(const char*& at) {
        const char* const start = at;
        while (*at == 'l' && at - start < 2) ++at;
        const std::string_view length(start, static_cast<std::size_t>(at - start));
        const char kind = *at;
        if (kind == 'd' || kind == 'i') {
            PutDecimal(TakeInteger<long long, long, int>(length));
        } else if (kind == 'u') {
            PutDecimal(TakeInteger<unsigned long long, unsigned long, unsigned int>(length));
        } else if (!length.empty()) {
            return false;
        } else if (kind == 's') {
            PutText({}, va_arg(m_arguments, const char*));
        } else if (kind == 'c') {
            const auto byte = static_cast<char>(va_arg(m_arguments, int));
            Put({&byte, 1});
        } else if (kind == '%') {
            Put("%");
        } else {
            return false;
        }
        ++at;
        return true;
    }

    template <class Number>
    void PutDecimal(Number number) {
        char text[24];
        const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
        Put({text, static_cast<std::size_t>(end - text)});
    }

    void Put(std::string_view text) {
        if (m_stream != nullptr) {
            std::fwrite(text.data(), 1, text.size(), m_stream);
        } else if (m_length < m_size) {
            text.copy(m_buffer + m_length, m_size - m_length);
        }
        m_length += text.size();
    }

    void Pad(std::size_t count) {
        for (; count > 0; --count) Put(" ");
    }

    bool Convert(Conversion conversion) {
        if (conversion.takesWidth) {
            const int width = va_arg(m_arguments, int);
            conversion.isLeft |= width < 0;
            conversion.width = std::abs(static_cast<long long>(width));
        }
        if (conversion.takesPrecision) {
            const int precision = va_arg(m_arguments, int);
            if (precision >= 0) conversion.precision = precision;
        }
        const auto most =
            static_cast<long long>(conversion.IsText() ? m_most : std::min(m_most, kMostOfNumber));
        if (conversion.width) conversion.width = std::min(*conversion.width, most);
        if (conversion.precision) conversion.precision = std::min(*conversion.precision, most);
        return Dispatch(conversion);
    }

    bool Dispatch(const Conversion& conversion) {
        switch (conversion.kind) {
            case '%':
                Put("%");
                return true;
            case 'd':
            case 'i':
                return PutSigned(conversion);
            case 'u':
            case 'o':
            case 'x':
            case 'X':
                return PutUnsigned(conversion);
            case 'p':
                return PutWith(conversion, "", va_arg(m_arguments, void*));
            case 's':
            case 'S':
                return conversion.IsWideText() ? PutWideText(conversion, va_arg(m_arguments, const wchar_t*))
                                               : PutText(conversion, va_arg(m_arguments, const char*));
            case 'c':
            case 'C':
                return PutCharacter(conversion);
            default:
                if (!conversion.IsReal())
                    return false;  // %n, the end of the format, and what no runtime knows
                return conversion.length == "L" ? PutReal(conversion, "L", va_arg(m_arguments, long double))
                                                : PutReal(conversion, "", va_arg(m_arguments, double));
        }
    }

    /// A number as the runtime writes it, by a format with what was cut.
    template <class Value>
    static std::optional<std::pmr::string> TextOf(const Conversion& conversion, const char* length,
                                                  Value value, NumberMemory& memory) {
        std::pmr::string format("%", &memory);
        std::remove_copy(conversion.flags.begin(), conversion.flags.end(), std::back_inserter(format),
                         kGroups);
        if (conversion.isLeft) format += '-';
        if (conversion.width) format += std::to_string(*conversion.width);
        if (conversion.precision) format += '.' + std::to_string(*conversion.precision);
        format += length;
        format += conversion.kind;
        constexpr std::size_t kUsualSize = 64;
        std::pmr::string text(kUsualSize, '\0', &memory);
        int count = std::snprintf(text.data(), text.size(), format.c_str(), value);
        if (count < 0) return std::nullopt;
        const auto size = static_cast<std::size_t>(count);
        if (size >= text.size()) {
            text.resize(size + 1);
            count = std::snprintf(text.data(), text.size(), format.c_str(), value);
        }
        text.resize(size);
        return text;
    }

    template <class Value>
    bool PutWith(const Conversion& conversion, const char* length, Value value) {
        NumberMemory memory;
        const auto text = TextOf(conversion, length, value, memory);
        if (text) Put(*text);
        return text.has_value();
    }

    /// The decimal point of the locale, which may take several bytes, becomes that of the C locale; the
    /// runtime is not given the width, as it would count those bytes.
    template <class Real>
    bool PutReal(Conversion conversion, const char* length, Real value) {
        const auto width = static_cast<std::size_t>(std::exchange(conversion.width, {}).value_or(0));
        NumberMemory memory;
        auto text = TextOf(conversion, length, value, memory);
        if (!text) return false;
        SetPoint(*text);
        const bool hasZeros = conversion.flags.find('0') != std::string_view::npos && !conversion.isLeft;
        if (hasZeros && std::isfinite(value) && text->size() < width)
            text->insert(StartOfDigits(*text), width - text->size(), '0');
        conversion.width = static_cast<long long>(width);
        PutPadded(conversion, *text);
        return true;
    }

    bool PutSigned(const Conversion& c) {
        if (c.length == "hh") return PutWith(c, "hh", va_arg(m_arguments, int));
        if (c.length == "h") return PutWith(c, "h", va_arg(m_arguments, int));
        return PutWith(c, "ll", TakeInteger<long long, long, int>(c.length));
    }

    bool PutUnsigned(const Conversion& c) {
        if (c.length == "hh") return PutWith(c, "hh", va_arg(m_arguments, unsigned int));
        if (c.length == "h") return PutWith(c, "h", va_arg(m_arguments, unsigned int));
        return PutWith(c, "ll", TakeInteger<unsigned long long, unsigned long, unsigned int>(c.length));
    }

    template <class LongLong, class Long, class Int>
    LongLong TakeInteger(std::string_view length) {
        const bool is64 = length == "ll" || length == "j" || length == "z" || length == "t" ||
                          length == "q" || length == "I64" || length == "I" || length == "L";
        if (is64) return va_arg(m_arguments, LongLong);
        if (length == "l") return va_arg(m_arguments, Long);
        return va_arg(m_arguments, Int);
    }

    bool PutText(const Conversion& conversion, const char* text) {
        if (text == nullptr) text = "(null)";
        const auto most = static_cast<std::size_t>(conversion.precision.value_or(0));
        PutPadded(conversion, conversion.precision ? std::string_view(text, ::strnlen(text, most)) : text);
        return true;
    }

    /// The precision counts bytes, as in C; no character is cut.
    bool PutWideText(const Conversion& conversion, const wchar_t* text) {
        if (text == nullptr) text = L"(null)";
        std::size_t units = 0;  // no more than can matter, as the end may be missing with a precision
        const auto most = static_cast<std::size_t>(conversion.precision.value_or(0));
        while ((!conversion.precision || units < most) && text[units] != L'\0') ++units;
        const std::string narrow = ToUtf8({text, units});
        PutPadded(conversion, conversion.precision ? CutUtf8(narrow, most) : narrow);
        return true;
    }

    bool PutCharacter(const Conversion& conversion) {
        if (conversion.IsWideText()) {
            const auto unit = static_cast<wchar_t>(va_arg(m_arguments, unsigned int));
            PutPadded(conversion, ToUtf8({&unit, 1}));
        } else {
            const auto byte = static_cast<char>(va_arg(m_arguments, int));
            PutPadded(conversion, {&byte, 1});
        }
        return true;
    }

    void PutPadded(const Conversion& conversion, std::string_view text) {
        const auto width = static_cast<std::size_t>(conversion.width.value_or(0));
        const std::size_t padding = width > text.size() ? width - text.size() : 0;
        if (!conversion.isLeft) Pad(padding);
        Put(text);
        if (conversion.isLeft) Pad(padding);
    }

    std::FILE* const m_stream = nullptr;
    char* const m_buffer = nullptr;
    const std::size_t m_size = 0;
    const std::size_t m_most;  ///< of a width or precision
    std::va_list& m_arguments;
    std::size_t m_length = 0;
};

}  // namespace

int FormatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    if (format == nullptr) format = "";
    std::va_list copy;
    va_copy(copy, arguments);
    const std::optional<int> simple = Formatter(buffer, size, copy).FollowSimple(format);
    va_end(copy);
    if (simple) return *simple;
    if (IsPlain(format, static_cast<long long>(size))) return std::vsnprintf(buffer, size, format, arguments);
    va_copy(copy, arguments);
    const int length = Formatter(buffer, size, copy).Follow(format);
    va_end(copy);
    return length;
}

bool FormatTo(std::FILE* stream, const char* format, std::va_list arguments) {
    char usual[kMostOfNumber];
    std::va_list copy;
    va_copy(copy, arguments);
    const int length = FormatBounded(usual, sizeof usual, format, copy);
    va_end(copy);
    if (length < 0) return false;
    if (static_cast<std::size_t>(length) < sizeof usual) {
        std::fwrite(usual, 1, static_cast<std::size_t>(length), stream);
    } else {
        va_copy(copy, arguments);
        Formatter(stream, copy).Follow(format);
        va_end(copy);
    }
    return true;
}

}  // namespace quillon::base
