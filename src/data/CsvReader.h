#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "data/CellAccess.h"
#include "quillon/DataTableIO.h"

namespace quillon {

/// Throws std::invalid_argument for a separator that cannot separate.
void CheckSeparator(const CsvOptions& options);

/// Reads CSV (RFC 4180) into a table: the first record into its column definitions, the others into rows.
class CsvReader {
public:
    CsvReader(std::string_view text, const CsvOptions& options);

    /// Reads the whole text; throws TableFormatError.
    void Read(DataTable& table);

private:
    [[noreturn]] void Fail(const char* position, const std::string& reason) const;

    bool AtEnd() const { return m_position == m_end; }
    bool Skip(char character);
    /// Whether no record follows.
    bool IsOver() const;

    void ReadHeading(DataTable& table);
    void ReadRow(DataTable& table);
    /// Moves past the end of a field; returns whether another field follows.
    bool EndField();
    void ReadField();
    void ReadQuoted();
    void AddCell(VariantList& row, std::size_t column);
    std::size_t PassFurtherFields(std::size_t count);

    const std::string_view m_text;
    const CsvOptions& m_options;
    const char* m_position;
    const char* const m_end;
    const char* const m_lastContent;  // behind the last character that is no white space
    const bool m_valid;               // the text is valid UTF-8
    std::size_t m_record = 1;         // that is being read
    std::vector<HeldName> m_names;
    std::vector<CellKind> m_kinds;  // of the columns
    // The field that was read last: where it begins, its text, whether it was quoted.
    const char* m_start = nullptr;
    std::string_view m_field;
    bool m_quoted = false;
    std::string m_unquoted, m_repaired;
};

}  // namespace quillon
