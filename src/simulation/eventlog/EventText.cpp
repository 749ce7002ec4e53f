#include <array>
#include <charconv>
#include <cstdio>

#include "base/Characters.h"
#include "base/CivilTime.h"
#include "base/NumberText.h"
#include "simulation/eventlog/EventLog.h"

namespace quillon::simulation {

namespace {

bool TakeText(std::string_view& text, std::string_view expected) {
    base::SkipSpace(text);
    if (!text.starts_with(expected)) return false;
    text.remove_prefix(expected.size());
    return true;
}

/// Takes the first of the choices that the text begins with.
template <std::size_t N>
bool TakeOneOf(std::string_view& text, const std::array<const char*, N>& choices, std::string& taken) {
    for (const char* const choice : choices) {
        taken = choice;
        if (TakeText(text, choice)) return true;
    }
    return false;
}

std::string Escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '\'':
                result += "&apos;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string TimeText(std::uint64_t fileTime) {
    const auto ticks = static_cast<std::int64_t>(fileTime);
    const std::int64_t seconds = ticks / base::kTicksPerSecond;
    const auto second = static_cast<int>(seconds % base::kSecondsPerDay);
    const auto date = base::CivilFromDays(base::DaysFromCivil(1601, 1, 1) + seconds / base::kSecondsPerDay);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03d0000Z",
                  static_cast<int>(date.year), date.month, date.day, second / 3600, second / 60 % 60,
                  second % 60, static_cast<int>(ticks % base::kTicksPerSecond / 10'000));
    return text.data();
}

std::string Element(const std::string& name, const std::string& content) {
    return '<' + name + '>' + Escaped(content) + "</" + name + '>';
}

}  // namespace

std::optional<EventQuery> EventQuery::Parse(std::string_view text) {
    EventQuery query;
    if (text.empty() || text == "*") return query;
    const std::array<const char*, 3> properties{"EventRecordID", "EventID", "Level"};
    const std::array<const char*, 5> operators{"<=", ">=", "=", "<", ">"};
    if (!TakeText(text, "*") || !TakeText(text, "[") || !TakeText(text, "System") || !TakeText(text, "["))
        return std::nullopt;
    const bool isEnclosed = TakeText(text, "(");
    if (!TakeOneOf(text, properties, query.m_property) || !TakeOneOf(text, operators, query.m_operator))
        return std::nullopt;
    const auto value = base::TakeUnsigned(text);
    if (!value || (isEnclosed && !TakeText(text, ")")) || !TakeText(text, "]") || !TakeText(text, "]"))
        return std::nullopt;
    query.m_value = *value;
    return text.empty() ? std::optional(query) : std::nullopt;
}

bool EventQuery::Matches(const Event& event) const {
    if (m_operator.empty()) return true;
    const std::uint64_t number = m_property == "EventRecordID" ? event.recordId
                                 : m_property == "EventID"     ? event.eventId
                                                               : event.level;
    if (number == m_value) return m_operator.back() == '=';
    return m_operator.front() == (number < m_value ? '<' : '>');
}

std::string EventXml(const Event& event) {
    return "<Event xmlns='http://schemas.microsoft.com/win/2004/08/events/event'><System><Provider Name='" +
           Escaped(event.provider) + "'/>" + Element("EventID", std::to_string(event.eventId)) +
           Element("Level", std::to_string(event.level)) + "<TimeCreated SystemTime='" +
           TimeText(event.fileTime) + "'/>" + Element("EventRecordID", std::to_string(event.recordId)) +
           Element("Channel", event.channel) + Element("Computer", "localhost") + "</System><EventData>" +
           Element("Data", event.message) + "</EventData></Event>";
}

}  // namespace quillon::simulation
