#include "host/ConfigurationReader.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "common/JsonNumber.h"
#include "common/ShownText.h"
#include "host/SettingRules.h"

namespace quillon::agent {

namespace {

using Kind = SettingRule::Kind;

constexpr std::size_t kMostFaults = 100;

/// The line of the last character that was read: the parser may be one ahead of a number.
struct LineCount {
    std::size_t line = 1;
    bool isLineEnd = false;

    void Count(char c) {
        if (isLineEnd) ++line;
        isLineEnd = c == '\n';
    }
};

/// Counts lines while the parser walks over the document.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* position, LineCount& lines) : m_position(position), m_lines(&lines) {}

    reference operator*() const { return *m_position; }
    CountingIterator& operator++() {
        m_lines->Count(*m_position++);
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return m_position == other.m_position; }
    bool operator!=(const CountingIterator& other) const { return m_position != other.m_position; }

private:
    const char* m_position;
    LineCount* m_lines;
};

/// A name that would read as more than one step of a pattern is that of no setting.
std::string PatternOf(const std::string& name) {
    return name.find_first_of(".[]*") == std::string::npos ? name : "?";
}

const char* NameOf(Kind kind) {
    return kind == Kind::Object ? "an object" : kind == Kind::Array ? "an array" : "a single value";
}

/// Takes the parser's events. A value that no setting has is named once and passed over with all in it.
class SettingsHandler {
public:
    using number_integer_t = nlohmann::json::number_integer_t;
    using number_unsigned_t = nlohmann::json::number_unsigned_t;
    using number_float_t = nlohmann::json::number_float_t;
    using string_t = std::string;
    using binary_t = nlohmann::json::binary_t;

    SettingsHandler(const LineCount& lines, AgentSettings& settings, std::vector<std::string>& faults)
        : m_lines(lines), m_settings(settings), m_faults(faults) {}

    bool null() { return Scalar(nullptr); }
    bool boolean(bool value) { return Scalar(value); }
    bool number_integer(number_integer_t value) { return Scalar(static_cast<long long>(value)); }
    bool number_unsigned(number_unsigned_t value) {
        if (!std::in_range<long long>(value)) return Scalar(static_cast<double>(value));
        return Scalar(static_cast<long long>(value));
    }
    bool number_float(number_float_t, const std::string& literal) {
        constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
        return Scalar(ValueOfJsonNumber(JsonNumber(literal)).value_or(kNone));
    }
    bool string(std::string& value) { return Scalar(std::move(value)); }
    bool binary(binary_t&) { return false; }
    bool start_object(std::size_t) { return Enter(Kind::Object); }
    bool start_array(std::size_t) { return Enter(Kind::Array); }
    bool end_array() {
        Leave();
        return true;
    }
    bool end_object() {
        const bool goesOn = m_passedOver > 0 || CheckComplete();
        Leave();
        return goesOn;
    }

    bool key(std::string& name) {
        if (m_passedOver > 0) return true;
        Level& level = m_levels.back();
        m_place = level.place;
        const bool isChosen = level.place.pattern.starts_with("modules");
        if (level.place.pattern == "modules") m_place.module = name;
        m_place.key = name;
        const std::string dot = level.place.path.empty() ? "" : ".";
        m_place.pattern += dot + (isChosen ? "*" : PatternOf(name));
        m_place.path += dot + name;
        return level.names.insert(name).second || AddFault("is given twice");
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) {
        const std::string place =
            m_place.path.empty() ? "" : " at or after '" + ShownText(m_place.path) + '\'';
        m_faults.push_back("line " + std::to_string(m_lines.line) + ": not JSON" + place);
        return false;
    }

private:
    struct Level {
        Kind kind;
        SettingPlace place;
        std::set<std::string> names;
        std::size_t count = 0;
    };

    /// An element's place is told by its array; a member's was told by key().
    void MoveToElement() {
        if (m_levels.empty() || m_levels.back().kind != Kind::Array) return;
        Level& level = m_levels.back();
        m_place = level.place;
        m_place.pattern += "[]";
        m_place.path += '[' + std::to_string(level.count++) + ']';
    }

    /// Returns false to end the reading.
    bool AddFault(const std::string& text) {
        const std::string name =
            m_place.path.empty() ? "The document" : '\'' + ShownText(m_place.path) + '\'';
        m_faults.push_back("line " + std::to_string(m_lines.line) + ": " + name + ' ' + text);
        return m_faults.size() < kMostFaults;
    }

    /// Null, and `goesOn` told, after a fault.
    const SettingRule* Expect(Kind kind, bool& goesOn) {
        const SettingRule* const rule = FindSettingRule(m_place.pattern);
        if (rule != nullptr && rule->kind == kind) return rule;
        goesOn = AddFault(rule == nullptr ? "is no setting" : std::string("must be ") + NameOf(rule->kind));
        return nullptr;
    }

    bool Scalar(SettingValue value) {
        if (m_passedOver > 0) return true;
        MoveToElement();
        bool goesOn = true;
        const SettingRule* const rule = Expect(Kind::Scalar, goesOn);
        if (rule == nullptr) return goesOn;
        const std::string expected = rule->store(m_settings, m_place, value);
        return expected.empty() || AddFault("must be " + expected);
    }

    bool Enter(Kind kind) {
        if (m_passedOver > 0) return ++m_passedOver > 0;
        MoveToElement();
        bool goesOn = true;
        if (Expect(kind, goesOn) == nullptr) {
            m_passedOver = 1;
            return goesOn;
        }
        m_levels.push_back({kind, m_place, {}});
        if (m_place.pattern == "switches[]") m_settings.switches.emplace_back();
        return true;
    }

    void Leave() {
        if (m_passedOver > 0) {
            --m_passedOver;
        } else {
            m_levels.pop_back();
        }
    }

    bool CheckComplete() {
        const Level& level = m_levels.back();
        if (level.place.pattern != "switches[]") return true;
        bool goesOn = true;
        for (const char* const name : {"host", "port"}) {
            m_place.path = level.place.path + '.' + name;
            if (!level.names.contains(name)) goesOn = AddFault("is missing");
        }
        return goesOn;
    }

    const LineCount& m_lines;
    AgentSettings& m_settings;
    std::vector<std::string>& m_faults;
    std::vector<Level> m_levels;
    SettingPlace m_place;
    std::size_t m_passedOver = 0;  // levels of a value that is no setting
};

}  // namespace

bool ReadSettings(std::string_view document, AgentSettings& settings, std::vector<std::string>& faults) {
    const std::size_t before = faults.size();
    // JSON has it nowhere, but the parser would take it for the end.
    if (const std::size_t zero = document.find('\0'); zero != std::string_view::npos) {
        const auto line = 1 + std::ranges::count(document.substr(0, zero), '\n');
        faults.push_back("line " + std::to_string(line) + ": not JSON (a zero byte)");
        return false;
    }
    LineCount lines;
    SettingsHandler handler(lines, settings, faults);
    const char* const begin = document.data();
    nlohmann::json::sax_parse(CountingIterator(begin, lines),
                              CountingIterator(begin + document.size(), lines), &handler);
    return faults.size() == before;
}

}  // namespace quillon::agent
