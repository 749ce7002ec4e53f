#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

template <class Number>
std::optional<Number> ToNumber(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<bool> ToBoolean(const std::string& text) {
    if (text == "1" || StringUtils::CompareCaseInsensitive(text, "true")) return true;
    if (text == "0" || StringUtils::CompareCaseInsensitive(text, "false")) return false;
    return std::nullopt;
}

template <class T>
Variant TypedOrText(const std::string& name, const std::optional<T>& typed, const std::string& text) {
    return typed ? Variant(name, *typed) : Variant(name, text);
}

Variant ToVariant(const std::string& name, const std::string& text, ValueType type) {
    switch (type) {
        case ValueType::Integer:
            return TypedOrText(name, ToNumber<long long>(text), text);
        case ValueType::Double:
            return TypedOrText(name, ToNumber<double>(text), text);
        case ValueType::Boolean:
            return TypedOrText(name, ToBoolean(text), text);
        case ValueType::Text:
            break;
    }
    return Variant(name, text);
}

ValueType DeclaredType(const std::string& name, const Method& method) {
    const auto& declared = method.parameters;
    const auto found = std::find_if(declared.begin(), declared.end(),
                                    [&name](const Parameter& p) { return p.name == name; });
    return found == declared.end() ? ValueType::Text : found->type;
}

}  // namespace

MethodParameters ToParameters(const std::vector<std::string>& arguments, const Method& method) {
    MethodParameters parameters;
    for (const std::string& argument : arguments) {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        parameters.scalars.Add(ToVariant(name, argument.substr(equals + 1), DeclaredType(name, method)));
    }
    return parameters;
}

}  // namespace quillon::agent
