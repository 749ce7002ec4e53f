#include <benchmark/benchmark.h>

#include <cstdint>
#include <regex>
#include <sstream>
#include <string>

#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"

namespace {

using quillon::NetworkUtils;

constexpr std::uint32_t kWanted = 0xC0A80001;  // in none of the ranges
const std::string kWantedText = "192.168.0.1";

std::string MakeRanges(int count) {
    std::ostringstream text;
    for (int i = 0; i < count; ++i) {
        text << (i == 0 ? "" : ",") << "10." << i % 250 << '.' << i * 7 % 250 << ".10-10." << i % 250 << '.'
             << i * 7 % 250 << ".200";
    }
    return text.str();
}

const std::string kRanges = MakeRanges(1000);

/// By hand, and only for what is well formed.
bool InRangeUnchecked(const std::string& ranges) {
    std::uint32_t address = 0, octet = 0, low = 0;
    bool isInside = false;
    const auto isIn = [&] {
        const std::uint32_t high = address << 8 | octet;
        return low <= high ? low <= kWanted && kWanted <= high : high <= kWanted && kWanted <= low;
    };
    for (const char c : ranges) {
        if (c == '.') {
            address = address << 8 | octet;
            octet = 0;
        } else if (c == '-') {
            low = address << 8 | octet;
            address = octet = 0;
        } else if (c == ',') {
            isInside |= isIn();
            address = octet = 0;
        } else {
            octet = octet * 10 + static_cast<std::uint32_t>(c - '0');
        }
    }
    return isInside | isIn();
}

bool InRangeByRegex(const std::string& ranges) {
    static const std::regex pattern(R"((?:[0-9]{1,3}\.){3}[0-9]{1,3}\b[-]\b(?:[0-9]{1,3}\.){3}[0-9]{1,3})");
    std::istringstream stream(ranges);
    bool isInside = false;
    for (std::string piece; std::getline(stream, piece, ',');) {
        if (!std::regex_match(piece, pattern)) return false;
        isInside |= InRangeUnchecked(piece);
    }
    return isInside;
}

bool InRange(const std::string& ranges) { return NetworkUtils::IpInRange(kWantedText, ranges); }

template <auto Test>
void TestRanges(benchmark::State& state) {
    quillon::WindowsSockets::GetInstance()->InitializeSockets();
    for (auto _ : state) benchmark::DoNotOptimize(Test(kRanges));
}
BENCHMARK(TestRanges<InRangeUnchecked>)->Name("ip-in-range/baseline");
BENCHMARK(TestRanges<InRange>)->Name("ip-in-range/quillon");
BENCHMARK(TestRanges<InRangeByRegex>)->Name("ip-in-range/regex");

}  // namespace

BENCHMARK_MAIN();
