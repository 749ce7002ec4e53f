#include "cli/OpenMetrics.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cli/TableText.h"
#include "quillon/LogText.h"
#include "quillon/TimePoint.h"

namespace quillon::agent {

namespace {

constexpr const char* kNameColumn = "Name";
constexpr const char* kValueColumn = "Value";
constexpr const char* kRowLabel = "row";  // tells rows with the same texts apart

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsPlain(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

/// "PrivateWorkingSet" and "private working-set" give "private_working_set".
std::string MetricName(const std::string& text) {
    std::string name;
    char last = '_';
    for (const char c : text) {
        const bool beginsWord = IsUpper(c) && IsPlain(last);
        if (beginsWord || (!IsUpper(c) && !IsPlain(c))) {
            if (!name.empty() && name.back() != '_') name += '_';
        }
        if (IsUpper(c)) name += static_cast<char>(c - 'A' + 'a');
        if (IsPlain(c)) name += c;
        last = c;
    }
    return name;
}

/// Names that differ can give one metric name; within a row each stands for something of its own.
class Names {
public:
    explicit Names(std::set<std::string> taken = {}) : m_taken(std::move(taken)) {}
    std::string Take(const std::string& name) {
        std::string own = name;
        if (m_taken.insert(own).second) return own;
        int& number = m_numbers.try_emplace(name, 1).first->second;  // the last one that is taken
        do {
            own = name + '_' + std::to_string(++number);
        } while (!m_taken.insert(own).second);
        return own;
    }

private:
    std::set<std::string> m_taken;
    std::map<std::string, int> m_numbers;
};

/// A label cannot begin with a digit.
std::string LabelName(const std::string& text) {
    const std::string name = MetricName(text);
    return !name.empty() && name.front() <= '9' ? '_' + name : name;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : LogText::RepairUtf8(text)) {
        if (c == '\\' || c == '"') escaped += '\\';
        escaped += c == '\n' ? "\\n" : std::string(1, c);
    }
    return escaped;
}

std::string NumberText(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "+Inf" : "-Inf";
    char digits[32];
    return std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// The cell's number; nothing for a text and a null.
std::optional<std::string> ValueOf(const Variant& cell) {
    if (cell.IsNull()) return std::nullopt;
    if (cell.TypeIs(typeid(long long))) return cell.AsString();
    if (cell.TypeIs(typeid(bool))) return cell.GetBoolValue() ? "1" : "0";
    if (cell.TypeIs(typeid(double))) return NumberText(cell.GetDoubleValue());
    if (!cell.TypeIs(typeid(TimePoint))) return std::nullopt;
    const std::chrono::duration<double> seconds = cell.GetTimePoint().time_since_epoch();
    return NumberText(seconds.count());
}

/// The labels of a row's samples.
struct Labels {
    std::string text;
    std::string set;  ///< the same whatever the order of the cells is, which tells no samples apart
};

std::string Joined(const std::vector<std::string>& labels) {
    std::string text;
    for (const std::string& label : labels) (text += text.empty() ? "" : ",") += label;
    return text;
}

/// An empty label is read as none.
Labels LabelsOf(const VariantList& row, bool isNamed) {
    std::vector<std::string> labels;
    Names names({kRowLabel});
    for (const Variant& cell : row) {
        if (!cell.TypeIs(typeid(std::string)) || cell.GetStringValue().empty()) continue;
        const std::string name = LabelName(cell.GetName());
        if (name.empty() || (isNamed && cell.GetName() == kNameColumn)) continue;
        labels.push_back(names.Take(name) + "=\"" + Escaped(cell.GetStringValue()) + '"');
    }
    std::string text = Joined(labels);
    std::sort(labels.begin(), labels.end());
    return {std::move(text), Joined(labels)};
}

/// Samples by the names of their gauges, in the order in which these came up.
class Gauges {
public:
    void Add(const std::string& name, const Labels& labels, const std::string& value, std::size_t row) {
        auto [samples, isNew] = m_samples.try_emplace(name);
        if (isNew) m_order.push_back(name);
        std::string text = labels.text;
        if (!m_seen.insert(name + '{' + labels.set).second)
            text += (text.empty() ? "" : ",") + std::string(kRowLabel) + "=\"" + std::to_string(row) + '"';
        samples->second += name + (text.empty() ? "" : '{' + text + '}') + ' ' + value + '\n';
    }
    void Write(std::ostream& stream) const {
        for (const std::string& name : m_order)
            stream << "# TYPE " << name << " gauge\n" << m_samples.at(name);
        stream << "# EOF\n";
    }

private:
    std::map<std::string, std::string> m_samples;
    std::vector<std::string> m_order;
    std::unordered_set<std::string> m_seen;
};

bool IsNamed(const VariantList& row) {
    const Variant* const name = row.Find(kNameColumn);
    const Variant* const value = row.Find(kValueColumn);
    return name != nullptr && name->TypeIs(typeid(std::string)) && value != nullptr && ValueOf(*value);
}

}  // namespace

void WriteOpenMetrics(std::ostream& stream, const DataTable& table, const std::string& method) {
    const std::string prefix = "quillon_" + MetricName(method) + '_';
    Gauges gauges;
    std::size_t number = 0;
    for (const VariantList& row : table) {
        const bool isNamed = IsNamed(row);
        const Labels labels = LabelsOf(row, isNamed);
        Names names;
        for (const Variant& cell : row) {
            const std::optional<std::string> value = ValueOf(cell);
            if (!value) continue;
            const bool isValue = isNamed && cell.GetName() == kValueColumn;
            const std::string name = isValue ? row.Get(kNameColumn).GetStringValue() : cell.GetName();
            gauges.Add(names.Take(prefix + MetricName(name)), labels, *value, number);
        }
        ++number;
    }
    gauges.Write(stream);
}

}  // namespace quillon::agent
