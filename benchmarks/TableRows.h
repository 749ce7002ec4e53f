#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "quillon/DataTable.h"

/// The rows that the benchmarks of tables use, as a DataTable and as what a module might use instead.

namespace quillon {

constexpr int kRows = 100'000;
constexpr int kCells = 6;
inline const std::string kNames[kCells] = {"Name", "Path", "Size", "Count", "Ratio", "Hidden"};

/// The values of a row, made beforehand for all.
struct Source {
    std::string name, path;  // 12 and 40 bytes
    long long size, count;
    double ratio;
    bool hidden;
};

inline const std::vector<Source>& Sources() {
    static const std::vector<Source> sources = [] {
        std::vector<Source> made;
        for (int i = 0; i < kRows; ++i) {
            const std::string number = std::to_string(10'000'000 + i);
            made.push_back({"file" + number, "C:\\Program Files\\Vendor\\Tool\\bin" + number, i * 4096LL, i,
                            i / 7.0, i % 3 == 0});
        }
        return made;
    }();
    return sources;
}

/// Named cells of the same kinds without a library.
using VariantCell = std::variant<std::monostate, std::string, long long, double, bool>;
using VariantRow = std::vector<std::pair<std::string, VariantCell>>;
using VariantTable = std::vector<VariantRow>;

inline VariantTable BuildVariants() {
    VariantTable table;
    for (const Source& source : Sources()) {
        VariantRow row;
        row.reserve(kCells);
        row.emplace_back(kNames[0], source.name);
        row.emplace_back(kNames[1], source.path);
        row.emplace_back(kNames[2], source.size);
        row.emplace_back(kNames[3], source.count);
        row.emplace_back(kNames[4], source.ratio);
        row.emplace_back(kNames[5], source.hidden);
        table.push_back(std::move(row));
    }
    return table;
}

inline DataTable BuildQuillon() {
    DataTable table;
    for (const Source& source : Sources()) {
        VariantList row;
        row.Reserve(kCells);
        row.Add(kNames[0], source.name);
        row.Add(kNames[1], source.path);
        row.Add(kNames[2], source.size);
        row.Add(kNames[3], source.count);
        row.Add(kNames[4], source.ratio);
        row.Add(kNames[5], source.hidden);
        table.AddRow(std::move(row));
    }
    return table;
}

inline const VariantTable& Variants() {
    static const VariantTable table = BuildVariants();
    return table;
}

inline const DataTable& Quillon() {
    static const DataTable table = BuildQuillon();
    return table;
}

}  // namespace quillon
