#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Knows how far one column extends on a line.
class QUILLON_API IParsableField {
public:
    IParsableField();
    virtual ~IParsableField();
    /// Appends one field, starting at `*cursor` in a zero-terminated line, to
    /// `value` and moves the cursor to where the next field starts.
    virtual bool Parse(const char** cursor, std::string& value) = 0;
};

/// Ends at the next space (not tab); the spaces after it are skipped.
class QUILLON_API SpaceSeparatedField : public IParsableField {
public:
    SpaceSeparatedField();
    ~SpaceSeparatedField() override;
    bool Parse(const char** cursor, std::string& value) override;
};

/// The rest of the line: for a last column that may contain spaces.
class QUILLON_API NullSeparatedField : public IParsableField {
public:
    NullSeparatedField();
    ~NullSeparatedField() override;
    bool Parse(const char** cursor, std::string& value) override;
};

/// Turns column-oriented text, one record a line, into rows of a table. Declare
/// the columns in order, then parse any number of texts.
class QUILLON_API TextToDataTableParser {
public:
    TextToDataTableParser();
    ~TextToDataTableParser();
    TextToDataTableParser(const TextToDataTableParser&) = delete;
    TextToDataTableParser& operator=(const TextToDataTableParser&) = delete;

    /// T is std::string, long long (decimal, times `multiplier` unless that is 0;
    /// what is out of range becomes the range's end) or bool ("1" or "true"). Takes
    /// ownership of `field`; a null one throws std::invalid_argument.
    template <class T>
    void AddField(const std::string& name, IParsableField* field, long long multiplier);

    /// Appends a row for every line that yields a value; a field that reads only
    /// white space gives no cell.
    void Parse(const std::string& text, DataTable& table) const;

private:
    using Converter = std::function<void(std::string_view text, VariantList& row)>;
    enum class Reach { ToSpace, ToLineEnd, Own };
    struct Column {
        std::unique_ptr<IParsableField> field;
        Reach reach;  ///< Own: only the field itself knows
        Converter convert;
    };

    template <class T>
    static Converter MakeConverter(const std::string& name, long long multiplier);
    const char* ParseLine(const char* cursor, VariantList& row) const;

    std::vector<Column> m_columns;
    bool m_hasOwnFields = false;
};

}  // namespace quillon
