#include <benchmark/benchmark.h>

#include <charconv>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TableRows.h"
#include "quillon/DataTableIO.h"

/// The forms of a table as text: JSON, JSON Lines, CSV and text for people. The baselines are the loops
/// that a module would write over rows of std::variant, without escapes, checks or places of errors; the
/// peer is a JSON library. Rates are in bytes of text.

namespace quillon {
namespace {

using PeerJson = nlohmann::ordered_json;

void AppendNumber(std::string& output, auto value) {
    char buffer[32];
    output.append(buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr);
}

/// Appends a value; texts stand in quotes when there is one to put around them.
void AppendCell(std::string& output, const VariantCell& cell, std::string_view quote) {
    if (const auto* text = std::get_if<std::string>(&cell)) {
        output.append(quote).append(*text).append(quote);
    } else if (const auto* integer = std::get_if<long long>(&cell)) {
        AppendNumber(output, *integer);
    } else if (const auto* real = std::get_if<double>(&cell)) {
        AppendNumber(output, *real);
    } else if (const auto* flag = std::get_if<bool>(&cell)) {
        output += *flag ? "true" : "false";
    }
}

std::string PlainJson(const VariantTable& table) {
    std::string output = "[";
    for (const VariantRow& row : table) {
        output += &row == &table.front() ? "{" : ",{";
        for (const auto& [name, cell] : row) {
            if (&cell != &row.front().second) output += ',';
            output.append("\"").append(name).append("\":");
            AppendCell(output, cell, "\"");
        }
        output += '}';
    }
    return output += ']';
}

std::string PlainCsv(const VariantTable& table) {
    std::string output = "Name,Path,Size,Count,Ratio,Hidden\r\n";
    for (const VariantRow& row : table) {
        for (const auto& [name, cell] : row) {
            if (&cell != &row.front().second) output += ',';
            AppendCell(output, cell, "");
        }
        output += "\r\n";
    }
    return output;
}

std::string PlainText(const VariantTable& table) {
    std::ostringstream output;
    output << std::left;
    for (const VariantRow& row : table) {
        for (const auto& [name, cell] : row) {
            output.width(42);
            std::visit(
                [&output](const auto& value) {
                    if constexpr (!std::is_same_v<decltype(value), const std::monostate&>) output << value;
                },
                cell);
        }
        output << '\n';
    }
    return output.str();
}

/// Splits at commas and line ends; every cell is a text.
VariantTable PlainFromCsv(std::string_view csv) {
    VariantTable table;
    for (std::size_t position = csv.find('\n') + 1; position < csv.size();) {
        const std::size_t end = csv.find('\r', position);
        std::string_view line = csv.substr(position, end - position);
        VariantRow& row = table.emplace_back();
        row.reserve(kCells);
        for (const std::string& name : kNames) {
            const std::size_t comma = std::min(line.find(','), line.size());
            row.emplace_back(name, std::string(line.substr(0, comma)));
            line.remove_prefix(std::min(comma + 1, line.size()));
        }
        position = end + 2;
    }
    return table;
}

/// Reads one object after the other, each value up to the comma or the closing brace behind it.
VariantTable PlainFromJson(std::string_view json) {
    VariantTable table;
    for (std::size_t at = json.find('{'); at != std::string_view::npos; at = json.find('{', at)) {
        VariantRow& row = table.emplace_back();
        row.reserve(kCells);
        do {
            const std::size_t nameEnd = json.find('"', at + 2);
            const std::string_view name = json.substr(at + 2, nameEnd - at - 2);
            const char* const value = json.data() + nameEnd + 2;
            at = *value == '"' ? json.find('"', nameEnd + 3) + 1 : json.find_first_of(",}", nameEnd + 2);
            const char* const end = json.data() + at;
            long long integer = 0;
            double real = 0;
            if (*value == '"') {
                row.emplace_back(name, std::string(value + 1, end - 1));
            } else if (*value == 't' || *value == 'f') {
                row.emplace_back(name, *value == 't');
            } else if (std::from_chars(value, end, integer).ptr == end) {
                row.emplace_back(name, integer);
            } else {
                std::from_chars(value, end, real);
                row.emplace_back(name, real);
            }
        } while (json[at] == ',');
    }
    return table;
}

PeerJson BuildPeerJson() {
    PeerJson table = PeerJson::array();
    for (const Source& source : Sources()) {
        table.push_back({{kNames[0], source.name},
                         {kNames[1], source.path},
                         {kNames[2], source.size},
                         {kNames[3], source.count},
                         {kNames[4], source.ratio},
                         {kNames[5], source.hidden}});
    }
    return table;
}

void RunWrite(benchmark::State& state, const auto& table, auto write) {
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = write(table);
        benchmark::DoNotOptimize(text.data());
        bytes += text.size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

/// Reads tables one after the other; freeing them is not measured.
void RunRead(benchmark::State& state, std::string_view text, auto read) {
    for (auto _ : state) {
        auto table = read(text);
        state.PauseTiming();
        { const auto freed = std::move(table); }
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

const std::string& Json() {
    static const std::string text = ToJson(Quillon());
    return text;
}
const std::string& JsonLines() {
    static const std::string text = ToJsonLines(Quillon());
    return text;
}
const std::string& Csv() {
    static const std::string text = ToCsv(Quillon());
    return text;
}

DataTable OurFromCsv(std::string_view text) { return FromCsv(text); }
PeerJson PeerFromJson(std::string_view text) { return PeerJson::parse(text); }

void ToJsonBaseline(benchmark::State& state) { RunWrite(state, Variants(), PlainJson); }
void ToJsonPeer(benchmark::State& state) {
    static const PeerJson table = BuildPeerJson();
    RunWrite(state, table, [](const PeerJson& json) { return json.dump(); });
}
void ToJsonOurs(benchmark::State& state) { RunWrite(state, Quillon(), ToJson); }
void ToJsonLinesOurs(benchmark::State& state) { RunWrite(state, Quillon(), ToJsonLines); }
void ToCsvBaseline(benchmark::State& state) { RunWrite(state, Variants(), PlainCsv); }
void ToCsvOurs(benchmark::State& state) {
    RunWrite(state, Quillon(), [](const DataTable& table) { return ToCsv(table); });
}
void ToTextBaseline(benchmark::State& state) { RunWrite(state, Variants(), PlainText); }
void ToTextOurs(benchmark::State& state) {
    RunWrite(state, Quillon(), [](const DataTable& table) { return ToText(table); });
}
void FromJsonBaseline(benchmark::State& state) { RunRead(state, Json(), PlainFromJson); }
void FromJsonPeer(benchmark::State& state) { RunRead(state, Json(), PeerFromJson); }
void FromJsonOurs(benchmark::State& state) { RunRead(state, Json(), FromJson); }
void FromJsonLinesBaseline(benchmark::State& state) { RunRead(state, JsonLines(), PlainFromJson); }
void FromJsonLinesOurs(benchmark::State& state) { RunRead(state, JsonLines(), FromJson); }
void FromCsvBaseline(benchmark::State& state) { RunRead(state, Csv(), PlainFromCsv); }
void FromCsvOurs(benchmark::State& state) { RunRead(state, Csv(), OurFromCsv); }

BENCHMARK(ToJsonBaseline)->Name("to-json/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ToJsonPeer)->Name("to-json/nlohmann")->Unit(benchmark::kMillisecond);
BENCHMARK(ToJsonOurs)->Name("to-json/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ToJsonLinesOurs)->Name("to-json/quillon-lines")->Unit(benchmark::kMillisecond);
BENCHMARK(ToCsvBaseline)->Name("to-csv/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ToCsvOurs)->Name("to-csv/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(ToTextBaseline)->Name("to-text/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(ToTextOurs)->Name("to-text/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(FromJsonBaseline)->Name("from-json/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(FromJsonPeer)->Name("from-json/nlohmann")->Unit(benchmark::kMillisecond);
BENCHMARK(FromJsonOurs)->Name("from-json/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(FromJsonLinesBaseline)->Name("from-json-lines/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(FromJsonLinesOurs)->Name("from-json-lines/quillon")->Unit(benchmark::kMillisecond);
BENCHMARK(FromCsvBaseline)->Name("from-csv/baseline")->Unit(benchmark::kMillisecond);
BENCHMARK(FromCsvOurs)->Name("from-csv/quillon")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quillon

BENCHMARK_MAIN();
