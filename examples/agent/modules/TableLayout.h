#pragma once

#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// How the lines of a command's output become rows.
///
/// A layout is written as blank-separated columns "NAME[:TYPE[*FACTOR]][:EXTENT]":
/// TYPE is text (the default), integer or boolean, FACTOR multiplies an integer,
/// EXTENT is space (the default; up to the next blank) or rest (of the line; the last
/// column only). "USER PID:integer RSS:integer*1024 COMMAND:text:rest" reads most of `ps`.
class TableLayout {
public:
    /// False, with code 2 and a message in the result, when `text` is no layout.
    bool Read(const std::string& text, InvocationResult& result);

    /// A table with these columns and a row for every line, but the first `skip`.
    DataTable Parse(const std::string& text, long long skip) const;

private:
    enum class Type { Text, Integer, Boolean };
    struct Field {
        std::string name;
        Type type = Type::Text;
        long long factor = 0;  // 0: none
        bool isRest = false;
    };

    static std::string ReadType(const std::string& text, Field& field);
    static std::string ReadExtent(const std::string& text, Field& field);
    std::string Add(const std::string& column);

    std::vector<Field> m_fields;
};

}  // namespace quillon::agent
