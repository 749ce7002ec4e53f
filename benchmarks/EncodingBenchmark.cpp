#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"

namespace {

using quillon::FileSystemUtils;

constexpr std::size_t kSize = 64 << 20;

/// A file of 64 MiB in the working folder: one text again and again behind a mark.
class BigFile {
public:
    BigFile(std::string_view mark, std::string_view text) {
        std::string content(mark);
        while (content.size() + text.size() <= kSize) content += text;
        std::ofstream(kName, std::ios::binary) << content;
    }
    ~BigFile() { std::filesystem::remove(kName); }

    static constexpr const char* kName = "encoding_benchmark.txt";
};

std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char c : ascii) bytes += {c, '\0'};
    return bytes;
}

constexpr std::string_view kAscii =
    "2024-05-01 12:00:00 [ 1234] INFO  - A line as a log holds it, in ASCII.\r\n";

/// The same content read by the C library into memory that is there already.
void PlainRead(benchmark::State& state, std::string_view mark, const std::string& text) {
    const BigFile file(mark, text);
    std::string buffer(kSize, '\0');
    for (auto _ : state) {
        std::FILE* stream = std::fopen(BigFile::kName, "rb");
        benchmark::DoNotOptimize(std::fread(buffer.data(), 1, kSize, stream));
        std::fclose(stream);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}

void DetectAndRead(benchmark::State& state, std::string_view mark, const std::string& text) {
    const BigFile file(mark, text);
    for (auto _ : state) {
        FileSystemUtils::FileEncoding detected = FileSystemUtils::NOTSET;
        benchmark::DoNotOptimize(
            FileSystemUtils::ReadFile(BigFile::kName, detected, FileSystemUtils::NOTSET));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}

void Add(const std::string& workload, std::string_view mark, const std::string& text) {
    const auto add = [&](const char* entry, auto run) {
        benchmark::RegisterBenchmark((workload + entry).c_str(), run, mark, text)
            ->Unit(benchmark::kMillisecond);
    };
    add("/baseline", PlainRead);
    add("/quillon", DetectAndRead);
}

const bool kAdded = [] {
    const std::string german =
        "Gr\xC3\xB6\xC3\x9F"
        "e, \xC3\x9C"
        "bung und M\xC3\xBCh"
        "e auf jeder Zeile\n";
    Add("read-ansi", "", std::string(kAscii));
    Add("read-ansi-high-bytes", "",
        "\xC3r\xF6\xDF"
        "e, \xDC"
        "bung und M\xFChe auf jeder Zeile\n");
    Add("read-utf8", "\xEF\xBB\xBF", std::string(kAscii) + german);
    Add("read-utf8-no-mark", "", std::string(kAscii) + german);
    Add("read-utf16le", "\xFF\xFE", Utf16(kAscii));
    Add("read-utf16le-no-mark", "", Utf16(kAscii));
    Add("read-utf16be", "\xFE\xFF", '\0' + Utf16(kAscii).substr(0, 2 * kAscii.size() - 1));
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
