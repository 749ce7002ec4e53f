#include "modules/Arguments.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "common/ParameterType.h"
#include "common/ShownText.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/DescribedBinder.h"
#include "quillon/MethodMetadata.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/FromChars.h"

namespace quillon::agent {

namespace {

using Types = std::map<std::string, std::string, std::less<>>;

/// What became of a text: a value, or none and whether the text is one that is too large.
struct Read {
    std::optional<Variant> value;
    bool isOutOfRange = false;
};

template <class Number>
Read ToNumber(const std::string& name, const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = detail::FromChars(text.data(), end, number);
    if (stop != end || error == std::errc::invalid_argument) return {};
    if (error == std::errc::result_out_of_range) return {std::nullopt, true};
    return {Variant(name, number)};
}

Read ToBoolean(const std::string& name, const std::string& text) {
    if (text == "1" || StringUtils::CompareCaseInsensitive(text, "true")) return {Variant(name, true)};
    if (text == "0" || StringUtils::CompareCaseInsensitive(text, "false")) return {Variant(name, false)};
    return {};
}

/// Whether `text` is the pattern with any digits for its zeros.
bool Resembles(std::string_view text, std::string_view pattern) {
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), [](char given, char wanted) {
        return wanted == '0' ? given >= '0' && given <= '9' : given == wanted;
    });
}

/// No clock differs from UTC by more than 14 hours.
bool IsZone(std::string_view text) {
    if (text.empty() || text == "Z") return true;
    if (!Resembles(text, "+00:00") && !Resembles(text, "-00:00")) return false;
    const std::string_view hours = text.substr(1, 2), minutes = text.substr(4);
    return minutes < "60" && (hours < "14" || (hours == "14" && minutes == "00"));
}

/// The library's own reading is lenient: it lets a 31st of February count on, and
/// takes no notice of text that follows.
Read ToDateTime(const std::string& name, const std::string& text) {
    constexpr std::string_view kSeconds = "0000-00-00T00:00:00", kFraction = ".000";
    const std::string local = text.substr(0, kSeconds.size());
    std::string_view rest = std::string_view(text).substr(local.size());
    if (Resembles(rest.substr(0, kFraction.size()), kFraction)) rest.remove_prefix(kFraction.size());
    if (!Resembles(local, kSeconds) || !IsZone(rest)) return {};
    const TimePoint asUtc = DateTimeUtils::JsonDateTimeToTimePoint(local);
    if (!DateTimeUtils::FormatTimeAsISO8601(asUtc).starts_with(local)) return {};
    return {Variant(name, DateTimeUtils::JsonDateTimeToTimePoint(text))};
}

Read ToText(const std::string& name, const std::string& text) { return {Variant(name, text)}; }

Read ToNothing(const std::string&, const std::string&) { return {}; }

/// How values of a declared type are read, and what the message calls it.
struct Reading {
    const char* type;
    Read (*read)(const std::string& name, const std::string& text);
    const char* expected;
    const char* sample;      ///< a text that can be read; null when there is none
    const char* range = "";  ///< what is expected of one that is too large
};

const Reading& ReadingOf(std::string_view type) {
    static const Reading readings[] = {
        {"integer", &ToNumber<long long>, "an integer", "0",
         "between -9223372036854775808 and 9223372036854775807"},
        {"float", &ToNumber<double>, "a number", "0", "within the range of a double"},
        {"boolean", &ToBoolean, "true, false, 1 or 0", "0"},
        {"datetime", &ToDateTime, "a date and time such as 2026-01-31T18:30:00Z", "1970-01-01T00:00:00"},
        {"table", &ToNothing, "a table, which the command line cannot give", nullptr},
    };
    static const Reading asText = {"string", &ToText, "a text", ""};
    const auto* const found = std::find_if(std::begin(readings), std::end(readings),
                                           [type](const Reading& reading) { return reading.type == type; });
    return found == std::end(readings) ? asText : *found;
}

Types DeclaredTypes(const IMethodMetadataReader& method) {
    Types types;
    method.VisitParameter([&types](const char* name, const MethodParameter& parameter) {
        types.emplace(name, ParameterType(parameter));
    });
    return types;
}

/// Gathers what is wrong with the arguments of a call.
class Faults {
public:
    void Add(const std::string& name, const std::string& text, const Reading& reading, bool isOutOfRange) {
        Add(name, "Parameter '" + ShownText(name) + "' must be " +
                      (isOutOfRange ? reading.range : reading.expected) + ", not '" + ShownText(text) + "'");
    }
    void Add(const std::string& name, const std::string& fault) {
        Join(fault);
        m_names.insert(name);
    }
    /// What the description says of the call besides. `text` is as the binder joins it.
    void AddOthers(std::string_view text) {
        constexpr std::string_view kSeparator = "; ", kWrongType = "Value is wrong data-type for parameter '";
        while (!text.empty()) {
            const std::string_view fault = text.substr(0, text.find(kSeparator));
            text.remove_prefix(std::min(fault.size() + kSeparator.size(), text.size()));
            const bool isToldAlready = fault.starts_with(kWrongType) &&
                                       m_names.contains(std::string(fault.substr(
                                           kWrongType.size(), fault.size() - kWrongType.size() - 1)));
            if (!isToldAlready) Join(std::string(fault));
        }
    }
    const std::string& Text() const { return m_text; }

private:
    void Join(const std::string& fault) { m_text += (m_text.empty() ? "" : "; ") + fault; }

    std::set<std::string> m_names;
    std::string m_text;
};

const Reading& ReadingFor(const std::string& name, const Types& types) {
    const auto declared = types.find(name);
    return ReadingOf(declared == types.end() ? "string" : declared->second);
}

/// Returns a value in the place of one whose fault is told already, so that no other is found in it.
Variant Sample(const std::string& name, const std::string& text, const Reading& reading) {
    Variant given(name, text);
    return reading.sample == nullptr ? given : reading.read(name, reading.sample).value.value_or(given);
}

}  // namespace

bool ReadParameters(const std::vector<std::string>& arguments, const IMethodMetadataReader& method,
                    MethodParameters& parameters, InvocationResult& result) {
    return ReadParameters(arguments, {}, method, parameters, result);
}

bool ReadParameters(const std::vector<std::string>& arguments,
                    const std::map<std::string, std::string>& found, const IMethodMetadataReader& method,
                    MethodParameters& parameters, InvocationResult& result) {
    const Types types = DeclaredTypes(method);
    Faults faults;
    for (const auto& [name, fault] : found) {
        faults.Add(name, fault);
        parameters.scalars.Add(Sample(name, "", ReadingFor(name, types)));
    }
    for (const std::string& argument : arguments) {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const std::string text = argument.substr(equals + 1);
        const Reading& reading = ReadingFor(name, types);
        Read read = reading.read(name, text);
        if (!read.value) faults.Add(name, text, reading, read.isOutOfRange);
        parameters.scalars.Add(read.value ? std::move(*read.value) : Sample(name, text, reading));
    }
    if (faults.Text().empty()) return true;
    faults.AddOthers(DescribedBinder::FindFaults(parameters, method));
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = faults.Text();
    return false;
}

std::optional<Variant> ReadValue(const std::string& name, std::string_view type, const std::string& text) {
    return ReadingOf(type).read(name, text).value;
}

}  // namespace quillon::agent
