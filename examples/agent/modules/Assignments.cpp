#include "modules/Assignments.h"

#include <vector>

#include "common/Failure.h"
#include "modules/Arguments.h"

namespace quillon::agent {

namespace {

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> pieces(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isTwice = text.compare(i, 2, ";;") == 0;
        if (text[i] != ';' || isTwice) {
            pieces.back() += text[i];
        } else {
            pieces.emplace_back();
        }
        if (isTwice) ++i;
    }
    return pieces;
}

bool IsType(const std::string& type) {
    return type == "text" || type == "integer" || type == "float" || type == "boolean";
}

}  // namespace

bool ReadAssignments(const char* parameter, const std::string& text, VariantList& values,
                     InvocationResult& result) {
    if (text.empty()) return true;
    for (const std::string& piece : Split(text)) {
        const std::size_t equals = piece.find('=');
        const std::string target = piece.substr(0, equals);
        const std::size_t colon = target.find(':');
        const std::string name = target.substr(0, colon);
        const std::string type = colon == std::string::npos ? "text" : target.substr(colon + 1);
        std::optional<Variant> value;
        if (type == "null" && !name.empty() && equals == piece.size() - 1) value = Variant::NullVariant(name);
        if (equals != std::string::npos && !name.empty() && IsType(type))
            value = ReadValue(name, type, piece.substr(equals + 1));
        if (!value)
            return RefuseParameter(
                std::string("'") + parameter + "' parameter cannot be read at '" + piece + '\'', result);
        values.Add(std::move(*value));
    }
    return true;
}

}  // namespace quillon::agent
