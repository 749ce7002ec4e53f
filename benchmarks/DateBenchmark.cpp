#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#ifdef QUILLON_HAS_POCO
#include <Poco/DateTimeFormat.h>
#include <Poco/DateTimeParser.h>
#endif

#include "quillon/DateTimeUtils.h"

namespace {

using quillon::DateTimeUtils;
using quillon::TimePoint;

constexpr std::int64_t kNoonTicks = 14'628'816'000'000'000;  // 2016-05-10T12:00:00Z
constexpr std::int64_t kStep = 123'456'789'012;              // so that no call repeats the one before

void IsoByLibc(benchmark::State& state) {
    std::int64_t ticks = kNoonTicks;
    for (auto _ : state) {
        ticks += kStep;
        const std::time_t seconds = ticks / 10'000'000;
        std::tm utc{};
        ::gmtime_r(&seconds, &utc);
        std::array<char, 80> text;
        std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900,
                      utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                      static_cast<int>(ticks / 10'000 % 1'000));
        benchmark::DoNotOptimize(std::string(text.data()));
    }
}
BENCHMARK(IsoByLibc)->Name("format-iso/baseline");

void Iso(benchmark::State& state) {
    std::int64_t ticks = kNoonTicks;
    for (auto _ : state) {
        ticks += kStep;
        benchmark::DoNotOptimize(DateTimeUtils::FormatTimeAsISO8601(TimePoint(TimePoint::duration(ticks))));
    }
}
BENCHMARK(Iso)->Name("format-iso/quillon");

const std::array<std::string, 4> kJson{"2016-05-10T12:13:14.123Z", "1999-12-31T23:59:59.000+05:30",
                                       "2024-02-29T00:00:00.999-08:00", "1970-01-01T00:00:00.000Z"};

/// Reads the fields, the fraction and the zone by sscanf and timegm.
long long ReadByLibc(const std::string& text) {
    std::tm utc{};
    if (std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &utc.tm_year, &utc.tm_mon, &utc.tm_mday, &utc.tm_hour,
                    &utc.tm_min, &utc.tm_sec) != 6) {
        return 0;
    }
    utc.tm_year -= 1900;
    utc.tm_mon -= 1;
    int milliseconds = 0;
    if (const char* point = std::strchr(text.c_str(), '.')) std::sscanf(point + 1, "%d", &milliseconds);
    int hours = 0;
    int minutes = 0;
    if (text.back() != 'Z') std::sscanf(text.c_str() + text.find_last_of("+-"), "%d:%d", &hours, &minutes);
    const int offset = hours * 60 + (hours < 0 ? -minutes : minutes);
    return ::timegm(&utc) - offset * 60 + (milliseconds >= 500 ? 1 : 0);
}

template <long long (*Read)(const std::string&)>
void ReadJson(benchmark::State& state) {
    std::size_t next = 0;
    for (auto _ : state) benchmark::DoNotOptimize(Read(kJson[next++ % kJson.size()]));
}
BENCHMARK(ReadJson<ReadByLibc>)->Name("read-json/baseline");
BENCHMARK(ReadJson<DateTimeUtils::JsonDateTimeToEpochTime>)->Name("read-json/quillon");

#ifdef QUILLON_HAS_POCO
long long ReadByPoco(const std::string& text) {
    int zone = 0;
    return Poco::DateTimeParser::parse(Poco::DateTimeFormat::ISO8601_FRAC_FORMAT, text, zone)
               .timestamp()
               .epochTime() -
           zone;
}
BENCHMARK(ReadJson<ReadByPoco>)->Name("read-json/poco");
#endif

}  // namespace

BENCHMARK_MAIN();
