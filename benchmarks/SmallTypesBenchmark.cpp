#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "quillon/UniqueIdentifier.h"
#include "quillon/Url.h"
#include "quillon/Version.h"

namespace {

using quillon::UniqueIdentifier;
using quillon::Url;
using quillon::Version;

const std::array<std::string, 4> kUrls{"https://switch.example.com/Background/Content?id=7",
                                       "http://10.20.30.40:8080/a file with blanks.zip", "HTTPS://host",
                                       "not a url at all"};

struct Parts {
    std::string scheme, host, path;
    unsigned int port = 0;
};

Parts UrlByRegex(const std::string& text) {
    static const std::regex pattern(R"(^(\w+)://([^/]+)(.*)$)");
    static const std::regex blank(" ");
    std::smatch match;
    if (!std::regex_match(text, match, pattern)) return {};
    Parts parts{match[1], match[2], std::regex_replace(match[3].str(), blank, "%20")};
    const std::size_t colon = parts.host.find(':');
    if (colon != std::string::npos) {
        parts.port = static_cast<unsigned int>(std::atoi(parts.host.c_str() + colon + 1));
        parts.host.resize(colon);
    }
    return parts;
}

const std::array<std::string, 4> kVersions{"10.2", "10.0.19045.3803", "1.2.3", "6.1beta"};

bool VersionByScanf(const std::string& text) {
    int dots = 0;
    for (const char c : text) dots += c == '.';
    std::array<unsigned long, 4> parts{};
    const int read = std::sscanf(text.c_str(), "%lu.%lu.%lu.%lu", &parts[0], &parts[1], &parts[2], &parts[3]);
    benchmark::DoNotOptimize(parts);
    return read == dots + 1;
}

const std::array<std::string, 2> kIdentifiers{"01b4f3c2-9a77-4d0e-8f21-5566778899aa",
                                              "{DEADBEEF-0123-4567-89AB-CDEF01234567}"};
using Bytes = std::array<unsigned char, 16>;

Bytes IdentifierByScanf(const std::string& text) {
    Bytes bytes{};
    const char* pair = text.c_str() + (text.size() == 38 ? 1 : 0);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::array<char, 3> two{pair[0], pair[1], '\0'};
        unsigned int value = 0;
        if (std::sscanf(two.data(), "%x", &value) != 1) break;
        bytes[i] = static_cast<unsigned char>(value);
        pair += i == 3 || i == 5 || i == 7 || i == 9 ? 3 : 2;
    }
    return bytes;
}

std::string IdentifierByPrintf(const Bytes& b) {
    std::array<char, 37> text;
    std::snprintf(text.data(), text.size(),
                  "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", b[0], b[1], b[2],
                  b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
    return std::string(text.data());
}

UniqueIdentifier ParseIdentifier(const std::string& text) {
    bool ok = false;
    return UniqueIdentifier::Parse(text, &ok);
}

std::string IdentifierToString(const Bytes& bytes) {
    unsigned char raw[16];
    std::copy(bytes.begin(), bytes.end(), raw);
    return UniqueIdentifier(raw).ToString();
}

Version ReadVersion(const std::string& text) { return Version(text); }

/// One text after the other, so that no call repeats the one before.
template <auto& texts, auto Read>
void ReadTexts(benchmark::State& state) {
    std::size_t next = 0;
    for (auto _ : state) benchmark::DoNotOptimize(Read(texts[next++ % texts.size()]));
}
BENCHMARK(ReadTexts<kUrls, UrlByRegex>)->Name("parse-url/baseline");
BENCHMARK(ReadTexts<kUrls, Url::Parse>)->Name("parse-url/quillon");
BENCHMARK(ReadTexts<kVersions, VersionByScanf>)->Name("parse-version/baseline");
BENCHMARK(ReadTexts<kVersions, ReadVersion>)->Name("parse-version/quillon");
BENCHMARK(ReadTexts<kIdentifiers, IdentifierByScanf>)->Name("parse-identifier/baseline");
BENCHMARK(ReadTexts<kIdentifiers, ParseIdentifier>)->Name("parse-identifier/quillon");

template <auto Print>
void PrintIdentifier(benchmark::State& state) {
    Bytes bytes{};
    for (auto _ : state) {
        ++bytes[0];
        benchmark::DoNotOptimize(Print(bytes));
    }
}
BENCHMARK(PrintIdentifier<IdentifierByPrintf>)->Name("print-identifier/baseline");
BENCHMARK(PrintIdentifier<IdentifierToString>)->Name("print-identifier/quillon");

}  // namespace

BENCHMARK_MAIN();
