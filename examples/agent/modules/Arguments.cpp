#include "modules/Arguments.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

#include "quillon/DateTimeUtils.h"
#include "quillon/MethodMetadata.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/FromChars.h"

namespace quillon::agent {

namespace {

using Types = std::map<std::string, std::string, std::less<>>;

template <class Number>
std::optional<Variant> ToNumber(const std::string& name, const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = detail::FromChars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(Variant(name, number)) : std::nullopt;
}

std::optional<Variant> ToBoolean(const std::string& name, const std::string& text) {
    if (text == "1" || StringUtils::CompareCaseInsensitive(text, "true")) return Variant(name, true);
    if (text == "0" || StringUtils::CompareCaseInsensitive(text, "false")) return Variant(name, false);
    return std::nullopt;
}

/// Whether `text` is the pattern with any digits for its zeros.
bool Resembles(std::string_view text, std::string_view pattern) {
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), [](char given, char wanted) {
        return wanted == '0' ? given >= '0' && given <= '9' : given == wanted;
    });
}

bool IsZone(std::string_view text) {
    return text.empty() || text == "Z" || Resembles(text, "+00:00") || Resembles(text, "-00:00");
}

/// The library's own reading is lenient: it lets a 31st of February count on, and
/// takes no notice of text that follows.
std::optional<Variant> ToDateTime(const std::string& name, const std::string& text) {
    constexpr std::string_view kSeconds = "0000-00-00T00:00:00", kFraction = ".000";
    const std::string local = text.substr(0, kSeconds.size());
    std::string_view rest = std::string_view(text).substr(local.size());
    if (Resembles(rest.substr(0, kFraction.size()), kFraction)) rest.remove_prefix(kFraction.size());
    if (!Resembles(local, kSeconds) || !IsZone(rest)) return std::nullopt;
    const TimePoint asUtc = DateTimeUtils::JsonDateTimeToTimePoint(local);
    if (!DateTimeUtils::FormatTimeAsISO8601(asUtc).starts_with(local)) return std::nullopt;
    return Variant(name, DateTimeUtils::JsonDateTimeToTimePoint(text));
}

std::optional<Variant> ToText(const std::string& name, const std::string& text) {
    return Variant(name, text);
}

std::optional<Variant> ToNothing(const std::string&, const std::string&) { return std::nullopt; }

/// How values of a declared type are read, and what the message calls it.
struct Reading {
    const char* type;
    std::optional<Variant> (*read)(const std::string& name, const std::string& text);
    const char* expected;
};

const Reading& ReadingOf(std::string_view type) {
    static const Reading readings[] = {
        {"integer", &ToNumber<long long>, "an integer"},
        {"float", &ToNumber<double>, "a number"},
        {"boolean", &ToBoolean, "true, false, 1 or 0"},
        {"datetime", &ToDateTime, "a date and time such as 2026-01-31T18:30:00Z"},
        {"table", &ToNothing, "a table, which the command line cannot give"},
    };
    static const Reading asText = {"string", &ToText, "a text"};
    const auto* const found = std::find_if(std::begin(readings), std::end(readings),
                                           [type](const Reading& reading) { return reading.type == type; });
    return found == std::end(readings) ? asText : *found;
}

Types DeclaredTypes(const IMethodMetadataReader& method) {
    Types types;
    method.VisitParameter([&types](const char* name, const MethodParameter& parameter) {
        types.emplace(name, parameter.Type());
    });
    return types;
}

bool Refuse(const std::string& name, const std::string& text, const char* expected,
            InvocationResult& result) {
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = "Parameter '" + name + "' must be " + expected + ", not '" + text + "'";
    return false;
}

}  // namespace

bool ReadParameters(const std::vector<std::string>& arguments, const IMethodMetadataReader& method,
                    MethodParameters& parameters, InvocationResult& result) {
    const Types types = DeclaredTypes(method);
    for (const std::string& argument : arguments) {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const std::string text = argument.substr(equals + 1);
        const auto declared = types.find(name);
        const Reading& reading = ReadingOf(declared == types.end() ? "string" : declared->second);
        std::optional<Variant> value = reading.read(name, text);
        if (!value) return Refuse(name, text, reading.expected, result);
        parameters.scalars.Add(std::move(*value));
    }
    return true;
}

std::optional<Variant> ReadValue(const std::string& name, std::string_view type, const std::string& text) {
    return ReadingOf(type).read(name, text);
}

}  // namespace quillon::agent
