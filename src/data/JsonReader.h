#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "data/HeldName.h"
#include "quillon/DataTable.h"

namespace quillon {

/// Reads a JSON text (RFC 8259) into rows. It asks the C library for nothing, so the process's locale
/// does not matter. Hostile nesting ends at 64 levels.
class JsonReader {
public:
    JsonReader(std::string_view text, DataTable& table);

    /// Reads the whole text; throws TableFormatError.
    void Read();

private:
    struct Name {
        HeldName held;
        bool isPlain = false;  // it is written without an escape
    };

    [[noreturn]] void Fail(const char* position, const std::string& reason) const;

    bool AtEnd() const { return m_position == m_end; }
    bool IsAt(char character) const { return !AtEnd() && *m_position == character; }
    bool Skip(char character);
    bool SkipWord(std::string_view word);
    void SkipSpace();
    void Expect(char character);

    void ReadArray();
    void ReadObjects();
    void ReadRow();
    void ReadCell(VariantList& row, HeldName& name);
    void ReadNumberCell(VariantList& row, HeldName& name);
    HeldName& ReadName(std::size_t column);
    bool SkipExpected(const Name& name);
    void AppendNested(std::string& output, std::size_t depth);
    void AppendNestedItems(std::string& output, std::size_t depth, char close);

    /// Returns the text of a string, which stays valid until the next call.
    std::string_view ReadString();
    void AppendEscaped(std::string& output);
    unsigned ReadHexUnit();
    /// Moves past a number. Returns whether it is written as an integer.
    bool PassNumber();
    void PassDigits();
    double ToDouble(const char* start) const;

    const std::string_view m_text;
    const char* m_position;
    const char* const m_end;
    const bool m_valid;  // the text is valid UTF-8
    DataTable& m_table;
    std::vector<Name> m_names;  // of the cells of the row before, by their place
    std::string m_unescaped, m_repaired;
};

}  // namespace quillon
