#include "MethodList.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

namespace quillon::agent {

namespace {

using Json = nlohmann::ordered_json;  // keys in the order in which they are added

constexpr std::size_t kNameWidth = 18;
constexpr std::size_t kKindWidth = 26;
constexpr std::size_t kLineWidth = 100;

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

/// Broken into indented lines at blanks.
std::string Wrapped(const std::string& text) {
    std::istringstream words(text);
    std::string lines, line = " ";
    for (std::string word; words >> word; line += ' ' + word) {
        if (line.size() + 1 + word.size() <= kLineWidth) continue;
        lines += line + '\n';
        line = " ";
    }
    return lines + line + '\n';
}

std::string Line(const std::string& name, const std::string& kind, const std::string& text) {
    return "    " + Padded(name, kNameWidth) + Padded(kind, kKindWidth) + text + '\n';
}

std::string Kind(const Parameter& parameter) {
    std::string kind = TypeName(parameter.type);
    if (parameter.mandatory) return kind + ", mandatory";
    return parameter.defaultText.empty() ? kind : kind + ", default " + parameter.defaultText;
}

std::string MethodText(const std::string& module, const Method& method) {
    std::string text = module + '.' + method.name + "\n" + Wrapped(method.text) + "  Parameters:\n";
    for (const Parameter& parameter : method.parameters)
        text += Line(parameter.name, Kind(parameter), parameter.text);
    text += "  Columns:\n";
    for (const Column& column : method.columns) text += Line(column.name, TypeName(column.type), column.text);
    return text;
}

Json ToObject(const Parameter& parameter) {
    return {{"name", parameter.name},
            {"type", TypeName(parameter.type)},
            {"mandatory", parameter.mandatory},
            {"default", parameter.defaultText.empty() ? Json() : Json(parameter.defaultText)},
            {"text", parameter.text}};
}

Json ToObject(const Column& column) {
    return {{"name", column.name}, {"type", TypeName(column.type)}, {"text", column.text}};
}

template <class Item>
Json ToArray(const std::vector<Item>& items) {
    Json array = Json::array();
    for (const Item& item : items) array.push_back(ToObject(item));
    return array;
}

Json MethodObject(const std::string& module, const Method& method) {
    return {{"name", module + '.' + method.name},
            {"text", method.text},
            {"parameters", ToArray(method.parameters)},
            {"columns", ToArray(method.columns)}};
}

}  // namespace

std::string DescribeAsText(const ModuleList& modules) {
    std::string text;
    for (const auto& module : modules) {
        for (const Method& method : module->GetMethods()) {
            if (!text.empty()) text += '\n';
            text += MethodText(module->GetName(), method);
        }
    }
    return text;
}

std::string DescribeAsJson(const ModuleList& modules) {
    Json array = Json::array();
    for (const auto& module : modules) {
        for (const Method& method : module->GetMethods())
            array.push_back(MethodObject(module->GetName(), method));
    }
    return array.dump(2) + '\n';
}

}  // namespace quillon::agent
