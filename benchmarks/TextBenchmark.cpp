#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <codecvt>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "base/Utf.h"
#include "quillon/StringUtils.h"

// Peers, where they are installed.
#ifdef QUILLON_HAS_QT
#include <QByteArray>
#include <QString>
#endif
#ifdef QUILLON_HAS_ICU
#include <unicode/ustring.h>
#endif
#ifdef QUILLON_HAS_POCO
#include <Poco/String.h>
#endif
#ifdef QUILLON_HAS_ABSEIL
#include <absl/strings/ascii.h>
#include <absl/strings/escaping.h>
#endif

// Text conversion and the string helpers on one MiB, each beside what one would
// write without them.
namespace {

using quillon::StringUtils;

constexpr std::size_t kSize = 1 << 20;

std::string Repeat(const std::string& unit) {
    std::string text;
    while (text.size() + unit.size() <= kSize) text += unit;
    return text;
}

const std::string& Ascii() {
    static const std::string text = Repeat("The quick brown fox jumps over the lazy dog, 0123456789 times. ");
    return text;
}

const std::string& Latin() {
    static const std::string text = Repeat(
        "D\xC3\xA9j\xC3\xA0 vu \xC3\xA0 l'\xC3\xA9t\xC3\xA9, o\xC3\xB9 \xC3\xA7"
        "a g\xC3\xAAne le ma\xC3\xAEtre; na\xC3\xAFvet\xC3\xA9. ");
    return text;
}

const std::string& Cjk() {
    static const std::string text = Repeat(
        "\xE4\xB8\xAD\xE6\x96\x87\xE6\x96\x87\xE6\x9C\xAC\xE6\xB5\x8B\xE8\xAF\x95"
        "\xEF\xBC\x8C\xE7\xBC\x96\xE7\xA0\x81\xE8\xBD\xAC\xE6\x8D\xA2\xE3\x80\x82");
    return text;
}

const std::string& Emoji() {
    static const std::string text =
        Repeat("\xF0\x9F\x98\x80\xF0\x9F\x9A\x80\xF0\x9F\x8E\x89\xF0\x9F\x91\x8D");
    return text;
}

void Throughput(benchmark::State& state, std::size_t bytes = kSize) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

using Text = const std::string& (*)();

// --- Splitting and joining ---
// First, as what an allocation costs depends on the heap that earlier work leaves.

const std::string& Lines() {
    static const std::string text = Repeat("a field of some length,another,third;\n");
    return text;
}

const std::vector<std::string>& Pieces() {
    static const std::vector<std::string> pieces = [] {
        std::vector<std::string> split;
        StringUtils::SplitByChar(Lines(), '\n', split);
        return split;
    }();
    return pieces;
}

const std::string& Fields() {
    static const std::string text = Repeat("4,System,NT AUTHORITY,12.5,running,0x3e7,yes,");
    return text;
}

void SplitBaseline(benchmark::State& state, Text text, char separator) {
    for (auto _ : state) {
        std::vector<std::string> pieces;
        std::istringstream stream(text());
        for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
        benchmark::DoNotOptimize(pieces);
    }
    Throughput(state);
}

void SplitQuillon(benchmark::State& state, Text text, char separator) {
    for (auto _ : state) {
        std::vector<std::string> pieces;
        StringUtils::SplitByChar(text(), separator, pieces);
        benchmark::DoNotOptimize(pieces);
    }
    Throughput(state);
}

void JoinBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::ostringstream joined;
        for (const std::string& piece : Pieces()) joined << piece << '\n';
        benchmark::DoNotOptimize(joined.str());
    }
    Throughput(state);
}

void JoinQuillon(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(StringUtils::StringVecToString(Pieces(), '\n'));
    Throughput(state);
}

BENCHMARK_CAPTURE(SplitBaseline, lines, Lines, '\n')->Name("split-lines/baseline");
BENCHMARK_CAPTURE(SplitQuillon, lines, Lines, '\n')->Name("split-lines/quillon");
BENCHMARK_CAPTURE(SplitBaseline, fields, Fields, ',')->Name("split-fields/baseline");
BENCHMARK_CAPTURE(SplitQuillon, fields, Fields, ',')->Name("split-fields/quillon");
BENCHMARK(JoinBaseline)->Name("join/baseline");
BENCHMARK(JoinQuillon)->Name("join/quillon");

// --- UTF-8 to wide and back ---

void ConvertBaseline(benchmark::State& state, Text text) {
    std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>> converter;
    for (auto _ : state) benchmark::DoNotOptimize(converter.to_bytes(converter.from_bytes(text())));
    Throughput(state);
}

void ConvertQuillon(benchmark::State& state, Text text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::WideStringToNarrow(StringUtils::NarrowStringToWide(text())));
    }
    Throughput(state);
}

BENCHMARK_CAPTURE(ConvertBaseline, ascii, Ascii)->Name("convert-ascii/baseline");
BENCHMARK_CAPTURE(ConvertQuillon, ascii, Ascii)->Name("convert-ascii/quillon");
BENCHMARK_CAPTURE(ConvertBaseline, latin, Latin)->Name("convert-latin/baseline");
BENCHMARK_CAPTURE(ConvertQuillon, latin, Latin)->Name("convert-latin/quillon");
BENCHMARK_CAPTURE(ConvertBaseline, cjk, Cjk)->Name("convert-cjk/baseline");
BENCHMARK_CAPTURE(ConvertQuillon, cjk, Cjk)->Name("convert-cjk/quillon");
BENCHMARK_CAPTURE(ConvertBaseline, emoji, Emoji)->Name("convert-emoji/baseline");
BENCHMARK_CAPTURE(ConvertQuillon, emoji, Emoji)->Name("convert-emoji/quillon");

// The same with units of 16 bits, which the wide texts of Windows have.
void Convert16Baseline(benchmark::State& state, Text text) {
    std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t> converter;
    for (auto _ : state) benchmark::DoNotOptimize(converter.to_bytes(converter.from_bytes(text())));
    Throughput(state);
}

void Convert16Quillon(benchmark::State& state, Text text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(quillon::base::Utf16ToUtf8(*quillon::base::Utf8ToUtf16(text())));
    }
    Throughput(state);
}

#ifdef QUILLON_HAS_QT
void Convert16Qt(benchmark::State& state, Text text) {
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromUtf8(text().data(), static_cast<int>(text().size())).toUtf8());
    Throughput(state);
}
BENCHMARK_CAPTURE(Convert16Qt, ascii, Ascii)->Name("convert16-ascii/qt");
BENCHMARK_CAPTURE(Convert16Qt, latin, Latin)->Name("convert16-latin/qt");
BENCHMARK_CAPTURE(Convert16Qt, cjk, Cjk)->Name("convert16-cjk/qt");
BENCHMARK_CAPTURE(Convert16Qt, emoji, Emoji)->Name("convert16-emoji/qt");
#endif

#ifdef QUILLON_HAS_ICU
// Into memory of the greatest size that is possible, which is used again.
void Convert16Icu(benchmark::State& state, Text text) {
    std::u16string units(text().size(), u'\0');
    std::string bytes(3 * units.size(), '\0');
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t count = 0, size = 0;
        u_strFromUTF8(units.data(), static_cast<int32_t>(units.size()), &count, text().data(),
                      static_cast<int32_t>(text().size()), &error);
        u_strToUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), &size, units.data(), count, &error);
        if (U_FAILURE(error)) state.SkipWithError("the text was not converted");
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
    Throughput(state);
}
BENCHMARK_CAPTURE(Convert16Icu, ascii, Ascii)->Name("convert16-ascii/icu");
BENCHMARK_CAPTURE(Convert16Icu, latin, Latin)->Name("convert16-latin/icu");
BENCHMARK_CAPTURE(Convert16Icu, cjk, Cjk)->Name("convert16-cjk/icu");
BENCHMARK_CAPTURE(Convert16Icu, emoji, Emoji)->Name("convert16-emoji/icu");
#endif

BENCHMARK_CAPTURE(Convert16Baseline, ascii, Ascii)->Name("convert16-ascii/baseline");
BENCHMARK_CAPTURE(Convert16Quillon, ascii, Ascii)->Name("convert16-ascii/quillon");
BENCHMARK_CAPTURE(Convert16Baseline, latin, Latin)->Name("convert16-latin/baseline");
BENCHMARK_CAPTURE(Convert16Quillon, latin, Latin)->Name("convert16-latin/quillon");
BENCHMARK_CAPTURE(Convert16Baseline, cjk, Cjk)->Name("convert16-cjk/baseline");
BENCHMARK_CAPTURE(Convert16Quillon, cjk, Cjk)->Name("convert16-cjk/quillon");
BENCHMARK_CAPTURE(Convert16Baseline, emoji, Emoji)->Name("convert16-emoji/baseline");
BENCHMARK_CAPTURE(Convert16Quillon, emoji, Emoji)->Name("convert16-emoji/quillon");

// The baseline of two threads is one: what it is measured by is bytes a second.
BENCHMARK_CAPTURE(ConvertQuillon, oneThread, Latin)->Name("convert-threads/baseline")->UseRealTime();
BENCHMARK_CAPTURE(ConvertQuillon, twoThreads, Latin)
    ->Name("convert-threads/quillon")
    ->UseRealTime()
    ->Threads(2);

// --- Replacing and searching ---

// Replaces in place, as the operation is mostly written: the tail moves each time.
void ReplaceBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::string text = Ascii();
        for (std::size_t at = 0; (at = text.find("lazy dog", at)) != std::string::npos; at += 8) {
            text.replace(at, 8, "sleeping dog");
        }
        benchmark::DoNotOptimize(text);
    }
    Throughput(state);
}

void ReplaceQuillon(benchmark::State& state) {
    for (auto _ : state) {
        std::string text = Ascii();
        StringUtils::ReplaceStringInPlace(text, "lazy dog", "sleeping dog", false);
        benchmark::DoNotOptimize(text);
    }
    Throughput(state);
}

void FindBaseline(benchmark::State& state) {
    const std::string needle = "The Lazy Cat";
    const auto equal = [](char a, char b) {
        return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
    };
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            std::search(Ascii().begin(), Ascii().end(), needle.begin(), needle.end(), equal));
    }
    Throughput(state);
}

void FindQuillon(benchmark::State& state) {
    const std::string needle = "The Lazy Cat";
    for (auto _ : state) benchmark::DoNotOptimize(StringUtils::FindCaseInsensitive(Ascii(), needle));
    Throughput(state);
}

BENCHMARK(ReplaceBaseline)->Name("replace-all/baseline");
BENCHMARK(ReplaceQuillon)->Name("replace-all/quillon");
#ifdef QUILLON_HAS_POCO
void ReplacePoco(benchmark::State& state) {
    for (auto _ : state) {
        std::string text = Ascii();
        Poco::replaceInPlace(text, "lazy dog", "sleeping dog");
        benchmark::DoNotOptimize(text);
    }
    Throughput(state);
}
BENCHMARK(ReplacePoco)->Name("replace-all/poco");
#endif
BENCHMARK(FindBaseline)->Name("find-any-case/baseline");
BENCHMARK(FindQuillon)->Name("find-any-case/quillon");

// --- Hexadecimal and URLs ---

void HexBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::string hex;
        for (const char c : Ascii()) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x",
                          static_cast<unsigned>(static_cast<unsigned char>(c)));
            hex += digits;
        }
        benchmark::DoNotOptimize(hex);
    }
    Throughput(state);
}

void HexQuillon(benchmark::State& state) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(Ascii().data());
    for (auto _ : state) benchmark::DoNotOptimize(StringUtils::ByteArrayToHexString(bytes, Ascii().size()));
    Throughput(state);
}

void UrlBaseline(benchmark::State& state) {
    const std::string escaped = " !#$&'()*+,;=@[]";
    for (auto _ : state) {
        std::string url;
        for (const char c : Ascii()) {
            char digits[4] = {c};
            if (escaped.find(c) != std::string::npos) {
                std::snprintf(digits, sizeof digits, "%%%02X",
                              static_cast<unsigned>(static_cast<unsigned char>(c)));
            }
            url += digits;
        }
        benchmark::DoNotOptimize(url);
    }
    Throughput(state);
}

void UrlQuillon(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(StringUtils::UrlEncode(Ascii()));
    Throughput(state);
}

const std::string& Digits() {
    static const std::string text = StringUtils::ByteArrayToHexString(
        reinterpret_cast<const unsigned char*>(Ascii().data()), Ascii().size() / 2);
    return text;
}

void UnhexBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<unsigned char> bytes;
        for (std::size_t i = 0; i < Digits().size(); i += 2) {
            const char digits[3] = {Digits()[i], Digits()[i + 1], '\0'};
            bytes.push_back(static_cast<unsigned char>(std::strtoul(digits, nullptr, 16)));
        }
        benchmark::DoNotOptimize(bytes);
    }
    Throughput(state, Digits().size());
}

void UnhexQuillon(benchmark::State& state) {
    std::vector<unsigned char> bytes(Digits().size() / 2);
    std::size_t count = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            StringUtils::HexStringToByteArray(Digits(), bytes.data(), bytes.size(), count));
    }
    Throughput(state, Digits().size());
}

const std::string& Escaped() {
    static const std::string text =
        Repeat("https://depot.quillon.example/content/file%20name%2Bpart.bin?version=12&");
    return text;
}

void UrlDecodeBaseline(benchmark::State& state) {
    for (auto _ : state) {
        std::string text;
        for (std::size_t i = 0; i < Escaped().size(); ++i) {
            if (Escaped()[i] != '%' || i + 2 >= Escaped().size()) {
                text += Escaped()[i];
                continue;
            }
            text += static_cast<char>(std::stoi(Escaped().substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
        benchmark::DoNotOptimize(text);
    }
    Throughput(state, Escaped().size());
}

void UrlDecodeQuillon(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(StringUtils::UrlDecode(Escaped()));
    Throughput(state, Escaped().size());
}

#ifdef QUILLON_HAS_QT
void UrlDecodeQt(benchmark::State& state) {
    const QByteArray escaped(Escaped().data(), static_cast<int>(Escaped().size()));
    for (auto _ : state) benchmark::DoNotOptimize(QByteArray::fromPercentEncoding(escaped));
    Throughput(state, Escaped().size());
}
BENCHMARK(UrlDecodeQt)->Name("url-decode/qt");
#endif

#ifdef QUILLON_HAS_ABSEIL
void HexAbseil(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(absl::BytesToHexString(Ascii()));
    Throughput(state);
}
void UnhexAbseil(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(absl::HexStringToBytes(Digits()));
    Throughput(state, Digits().size());
}
BENCHMARK(HexAbseil)->Name("hex/abseil");
BENCHMARK(UnhexAbseil)->Name("unhex/abseil");
#endif

BENCHMARK(UnhexBaseline)->Name("unhex/baseline");
BENCHMARK(UnhexQuillon)->Name("unhex/quillon");
BENCHMARK(UrlDecodeBaseline)->Name("url-decode/baseline");
BENCHMARK(UrlDecodeQuillon)->Name("url-decode/quillon");

// --- Trimming: each line of 40 characters between blanks is copied and trimmed ---

const std::vector<std::string>& Padded() {
    static const std::vector<std::string> lines(
        kSize / 64, "    " + std::string(40, 'x') + "\t  \r\n" + std::string(15, ' '));
    return lines;
}

void TrimBaseline(benchmark::State& state) {
    const std::string blanks = " \t\n\v\f\r";
    for (auto _ : state) {
        for (const std::string& line : Padded()) {
            const std::size_t first = line.find_first_not_of(blanks);
            const std::size_t last = line.find_last_not_of(blanks);
            benchmark::DoNotOptimize(line.substr(first, last - first + 1));
        }
    }
    Throughput(state);
}

void TrimQuillon(benchmark::State& state) {
    for (auto _ : state) {
        for (std::string line : Padded()) benchmark::DoNotOptimize(StringUtils::Trim(line));
    }
    Throughput(state);
}

#ifdef QUILLON_HAS_ABSEIL
void TrimAbseil(benchmark::State& state) {
    for (auto _ : state) {
        for (std::string line : Padded()) {
            absl::StripAsciiWhitespace(&line);
            benchmark::DoNotOptimize(line);
        }
    }
    Throughput(state);
}
BENCHMARK(TrimAbseil)->Name("trim/abseil");
#endif

BENCHMARK(TrimBaseline)->Name("trim/baseline");
BENCHMARK(TrimQuillon)->Name("trim/quillon");

BENCHMARK(HexBaseline)->Name("hex/baseline");
BENCHMARK(HexQuillon)->Name("hex/quillon");
BENCHMARK(UrlBaseline)->Name("url-encode/baseline");
BENCHMARK(UrlQuillon)->Name("url-encode/quillon");

}  // namespace

BENCHMARK_MAIN();
