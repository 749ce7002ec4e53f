#pragma once

#include <set>
#include <string>
#include <string_view>

#include "Require.h"
#include "quillon/DataTableIO.h"

inline void CheckPlace(const quillon::TableFormatError& error, std::size_t size) {
    const quillon::TextPlace& place = error.Place();
    Require(place.record > 0 && place.line > 0 && place.column > 0);
    Require(place.byte > 0 && place.byte <= size + 1 && !error.Reason().empty());
}

/// Of cells of one name only the first is written.
inline bool HasRepeatedNames(const quillon::DataTable& table) {
    const auto names = table.GetColumnNames();
    return std::set<std::string>(names.begin(), names.end()).size() < names.size();
}

/// Requires that a table which an import accepts is written and read back as the same table, unless names are
/// repeated. The first export completes missing cells; from then on nothing may change. NaN equals nothing,
/// so texts are compared too.
template <class Read, class Write>
void CheckRoundTrip(std::string_view input, Read read, Write write) {
    quillon::DataTable table;
    try {
        table = read(input);
    } catch (const quillon::TableFormatError& error) {
        CheckPlace(error, input.size());
        return;
    }
    const std::string text = write(table);
    if (HasRepeatedNames(table)) return;
    const quillon::DataTable again = read(text);
    Require(write(again) == text);
    Require(read(write(again)) == again || text.find("nan") != std::string::npos);
    Require(!quillon::ToText(table).empty() || table.GetColumnNames().empty());
}
