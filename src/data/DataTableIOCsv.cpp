#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "data/CellAccess.h"
#include "data/CsvReader.h"
#include "data/DataTableColumns.h"
#include "data/SpecialBytes.h"
#include "data/TableSink.h"
#include "data/TextPlace.h"
#include "quillon/DataTableIO.h"

namespace quillon {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
/// What a number may hold, infinity and NaN included.
constexpr std::string_view kNumberCharacters = "0123456789+-.einfa";
/// The first characters by which a program that calculates takes a text for a formula.
constexpr std::string_view kFormulaMarks = "=+-@\t\r";

void AppendQuoted(std::string& output, std::string_view text) {
    output += '"';
    for (std::size_t quote = text.find('"'); quote != std::string_view::npos; quote = text.find('"')) {
        output.append(text.substr(0, quote + 1)) += '"';
        text.remove_prefix(quote + 1);
    }
    output.append(text) += '"';
}

/// A line of such fields alone may be left out by a reader, see CsvOptions::skipTrailingBlankLines.
bool IsBlank(std::string_view text) { return text.find_first_not_of(" \t") == std::string_view::npos; }

class CsvWriter {
public:
    CsvWriter(const DataTable& table, const CsvOptions& options) : m_columns(table), m_options(options) {
        CheckSeparator(options);
    }

    void Write(TableSink& sink, const DataTable& table) {
        const auto& names = m_columns.ShownNames();
        if (names.empty()) return;
        for (const std::string& name : names) {
            if (&name != &names.front()) sink.Text() += m_options.separator;
            AppendText(sink.Text(), name);
        }
        sink.Text() += kLineEnd;
        bool good = sink.EndRow();
        for (auto row = table.begin(); good && row != table.end(); ++row) {
            AppendRow(sink.Text(), *row);
            good = sink.EndRow();
        }
    }

private:
    void AppendRow(std::string& output, const VariantList& row) {
        bool first = true;
        for (const Variant* cell : m_columns.CellsOf(row)) {
            if (!first) output += m_options.separator;
            first = false;
            if (cell != nullptr) AppendCell(output, *cell);
        }
        output += kLineEnd;
    }

    void AppendCell(std::string& output, const Variant& cell) const {
        switch (KindOf(cell)) {
            case CellKind::Null:
                break;
            case CellKind::Text:
                AppendText(output, cell.GetStringValue());
                break;
            case CellKind::Integer:
                AppendPlain(output, cell.GetLongLongValue(), &AppendInteger);
                break;
            case CellKind::Double:
                AppendPlain(output, cell.GetDoubleValue(), &AppendDouble);
                break;
            case CellKind::Boolean:
                AppendField(output, cell.GetBoolValue() ? "true" : "false");
                break;
            case CellKind::Time:
                AppendField(output, cell.AsString());
        }
    }

    /// Appends a number, which needs quotes only with an odd separator.
    template <class Number>
    void AppendPlain(std::string& output, Number value, void (*append)(std::string&, Number)) const {
        const std::size_t start = output.size();
        append(output, value);
        if (!m_separatesInNumbers || output.find(m_options.separator, start) == std::string::npos) return;
        const std::string number = output.substr(start);
        output.resize(start);
        AppendQuoted(output, number);
    }

    void AppendText(std::string& output, std::string_view text) const {
        const char* const end = text.data() + text.size();
        const bool isPlain =
            !IsBlank(text) && !m_options.formulaSafe &&
            FindCsvSpecial<AlsoFind::HighBytes>(text.data(), end, m_options.separator) == end;
        if (isPlain) {
            output += text;
        } else {
            AppendOddText(output, text);
        }
    }

    void AppendOddText(std::string& output, std::string_view text) const {
        std::string buffer;
        text = ValidUtf8(text, buffer);
        const bool isFormula = m_options.formulaSafe && !text.empty() &&
                               kFormulaMarks.find(text.front()) != std::string_view::npos;
        if (isFormula) {
            AppendQuoted(output, '\'' + std::string(text));
        } else {
            AppendField(output, text);
        }
    }

    /// Quotes a field that would be read as another one.
    void AppendField(std::string& output, std::string_view text) const {
        const char* const end = text.data() + text.size();
        const bool hasMark = WithoutByteOrderMark(text).size() < text.size();  // an import would skip it
        if (IsBlank(text) || hasMark ||
            FindCsvSpecial<AlsoFind::Nothing>(text.data(), end, m_options.separator) != end) {
            AppendQuoted(output, text);
        } else {
            output += text;
        }
    }

    DataTableColumns m_columns;
    const CsvOptions& m_options;
    const bool m_separatesInNumbers = kNumberCharacters.find(m_options.separator) != std::string_view::npos;
};

}  // namespace

std::string ToCsv(const DataTable& table) { return ToCsv(table, {}); }

std::string ToCsv(const DataTable& table, const CsvOptions& options) {
    TableSink sink(table.GetNumberOfRows());
    CsvWriter(table, options).Write(sink, table);
    return std::move(sink.Text());
}

void WriteCsv(std::ostream& stream, const DataTable& table, const CsvOptions& options) {
    TableSink sink(stream);
    CsvWriter(table, options).Write(sink, table);
}

}  // namespace quillon
