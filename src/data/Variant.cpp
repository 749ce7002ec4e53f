#include "quillon/Variant.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <string_view>
#include <utility>

#include "base/TextOrEmpty.h"
#include "data/DumpWriter.h"
#include "data/VariantRecord.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {
namespace {

struct KindTraits {
    const char* dumpWord;
    int sqlType;
    const char* sqlName;
};

const KindTraits& Traits(Kind kind) {
    static constexpr KindTraits kTraits[] = {
        {"string", 3, "TEXT"},  {"long long", 1, "INTEGER"}, {"bool", 1, "INTEGER"},
        {"double", 2, "FLOAT"}, {"time_point", 3, "TEXT"},   {"", 3, "TEXT"},
    };
    return kTraits[static_cast<std::size_t>(kind)];
}

constexpr int kSqlNull = 5;
constexpr std::size_t kDumpBufferSize = 1024;

/// Formats the number as "%g" does in the C locale.
std::string DoubleAsText(double value) {
    char buffer[20];
    const auto end = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 6).ptr;
    return std::string(buffer, end);
}

void LogError(const std::string& text) {
    if (ICLogger* logger = LoggerOrRegistered(nullptr)) {
        logger->Error("%s", text.c_str());
    } else {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
}

[[noreturn]] void ThrowWrongType(const std::type_info& wanted, const std::type_info& found) {
    LogError(std::string(wanted.name()) + " value requested, found " + found.name() + " type");
    throw std::invalid_argument(std::string(wanted.name()) + " type was expected");
}

}  // namespace

std::unique_ptr<const std::string> Variant::Record::BindName(const std::string& name) {
    if (name.find('-') == std::string::npos) return nullptr;
    auto bindName = std::make_unique<std::string>(name);
    std::replace(bindName->begin(), bindName->end(), '-', '_');
    return bindName;
}

const std::type_info& Variant::Record::HeldType() const noexcept {
    if (const boost::any* other = HeldIf<boost::any>()) return other->type();
    static constexpr const std::type_info* kTypes[] = {&typeid(std::string), &typeid(long long),
                                                       &typeid(bool), &typeid(double), &typeid(TimePoint)};
    return *kTypes[value.index()];
}

null_Variant::null_Variant(const std::string& message) : std::runtime_error(message) {}
null_Variant::~null_Variant() = default;

Variant::Variant() : m_record(new Record) {}
Variant::Variant(const char* value) : Variant(std::string(), value) {}
Variant::Variant(const std::string& value) : Variant(std::string(), value) {}
Variant::Variant(std::string&& value) : Variant(std::string(), std::move(value)) {}
Variant::Variant(long long value) : Variant(std::string(), value) {}
Variant::Variant(bool value) : Variant(std::string(), value) {}
Variant::Variant(double value) : Variant(std::string(), value) {}
Variant::Variant(TimePoint value) : Variant(std::string(), value) {}
Variant::Variant(const std::string& name, const char* value)
    : Variant(name, std::string(base::TextOrEmpty(value))) {}
Variant::Variant(const std::string& name, const std::string& value) : m_record(new Record(name, value)) {}
Variant::Variant(const std::string& name, std::string&& value)
    : m_record(new Record(name, std::move(value))) {}
Variant::Variant(const std::string& name, long long value) : m_record(new Record(name, value)) {}
Variant::Variant(const std::string& name, bool value) : m_record(new Record(name, value)) {}
Variant::Variant(const std::string& name, double value) : m_record(new Record(name, value)) {}
Variant::Variant(const std::string& name, TimePoint value) : m_record(new Record(name, value)) {}

Variant::Variant(const std::string& name, const std::type_index& type) : m_record(new Record(name)) {
    if (type == typeid(std::string)) {
        m_record->Hold(std::string());
    } else if (type == typeid(bool)) {
        m_record->Hold(false);
    } else if (type == typeid(double)) {
        m_record->Hold(0.0);
    } else if (type != typeid(long long)) {
        LogError("Internal error: unsupported type " + std::string(type.name()) + " in Variant(,type_info)");
        m_record->Hold(boost::any(static_cast<const char*>("")));
    }
}

Variant::Variant(const Variant& other) : m_record(new Record(other.Get())) {}

Variant& Variant::operator=(const Variant& other) {
    if (this != &other) m_record.reset(new Record(other.Get()));
    return *this;
}

Variant Variant::NullVariant(const std::string& name) {
    Variant result;
    result.SetName(name);
    return result;
}

Variant Variant::StringOrNullVariant(const std::string& name, const std::string& value) {
    return value.empty() ? NullVariant(name) : Variant(name, value);
}

void Variant::SetStringValue(const char* value) { SetValue(std::string(base::TextOrEmpty(value))); }
void Variant::SetStringValue(const std::string& value) { SetValue(value); }
void Variant::SetStringValue(std::string&& value) { SetValue(std::move(value)); }
void Variant::SetLongLongValue(long long value) { SetValue(value); }
void Variant::SetBoolValue(bool value) { SetValue(value); }
void Variant::SetDoubleValue(double value) { SetValue(value); }
void Variant::SetTimePoint(const TimePoint& value) { SetValue(value); }
void Variant::SetToNull() { Own().null = true; }

void Variant::SetName(const std::string& name) {
    Record& record = Own();
    auto bindName = Record::BindName(name);
    record.name = name;
    record.bindName = std::move(bindName);  // last, as the name given may be the old one
}

bool Variant::IsNull() const { return Get().null; }
const std::string& Variant::GetName() const { return Get().name; }

const std::string& Variant::GetBindName() const {
    const Record& record = Get();
    return record.bindName ? *record.bindName : record.name;
}

bool Variant::TypeIs(const std::type_info& type) const {
    const Record& record = Get();
    return !record.null && record.HeldType() == type;
}

const std::type_info& Variant::GetType() const {
    const Record& record = Get();
    if (record.null) throw null_Variant(record.name + " is null");
    return record.HeldType();
}

const char* Variant::GetTypeName() const {
    const Record& record = Get();
    return record.null ? "null" : record.HeldType().name();
}

const std::string& Variant::GetStringValue() const {
    const Record& record = Get();
    if (record.null || record.HeldKind() != Kind::Time) return Read<std::string>();
    thread_local std::string text;
    text = DateTimeUtils::FormatTimeAsISO8601(record.Held<TimePoint>());
    return text;
}

long long Variant::GetLongLongValue() const {
    return Get().HeldKind() == Kind::Boolean ? static_cast<long long>(Read<bool>()) : Read<long long>();
}

bool Variant::GetBoolValue() const {
    return Get().HeldKind() == Kind::Integer ? Read<long long>() != 0 : Read<bool>();
}

double Variant::GetDoubleValue() const { return Read<double>(); }
const TimePoint& Variant::GetTimePoint() const { return Read<TimePoint>(); }

template <VariantKind T>
std::optional<T> Variant::TryGet() const {
    const Record& record = Get();
    const T* const held = record.null ? nullptr : record.HeldIf<T>();
    return held != nullptr ? std::optional<T>(*held) : std::nullopt;
}

template QUILLON_API std::optional<std::string> Variant::TryGet() const;
template QUILLON_API std::optional<long long> Variant::TryGet() const;
template QUILLON_API std::optional<bool> Variant::TryGet() const;
template QUILLON_API std::optional<double> Variant::TryGet() const;
template QUILLON_API std::optional<TimePoint> Variant::TryGet() const;

std::string Variant::AsString() const {
    const Record& record = Get();
    if (record.null) return "null";
    switch (record.HeldKind()) {
        case Kind::Text:
            return record.Held<std::string>();
        case Kind::Integer:
            return std::to_string(record.Held<long long>());
        case Kind::Boolean:
            return record.Held<bool>() ? "true" : "false";
        case Kind::Double:
            return DoubleAsText(record.Held<double>());
        case Kind::Time:
            return DateTimeUtils::FormatTimeAsISO8601(record.Held<TimePoint>());
        case Kind::Unsupported:
            break;
    }
    ReportUnsupported("AsString");
    return "*** BAD TYPE ***";
}

int Variant::SqlType() const {
    const Record& record = Get();
    if (record.null) return kSqlNull;
    if (record.HeldKind() == Kind::Unsupported) ReportUnsupported("SqlType");
    return Traits(record.HeldKind()).sqlType;
}

const char* Variant::SqlTypeStr() const {
    const Record& record = Get();
    if (record.null) return "NULL";
    if (record.HeldKind() == Kind::Unsupported) ReportUnsupported("SqlTypeStr");
    return Traits(record.HeldKind()).sqlName;
}

bool Variant::operator==(const Variant& other) const {
    const std::optional<bool> equal = Equal(Get(), other.Get());
    if (!equal) ReportUnsupported("operator==");
    return equal.value_or(false);
}

bool Variant::operator!=(const Variant& other) const {
    const std::optional<bool> equal = Equal(Get(), other.Get());
    if (!equal) ReportUnsupported("operator!=");
    return !equal.value_or(true);
}

void Variant::Dump(ICLogger* logger, unsigned int indent) const {
    const Record& record = Get();
    const std::string prefix = DumpIndent(indent);
    const char* shownName = record.name.empty() ? "*NO NAME*" : record.name.c_str();
    char line[kDumpBufferSize];
    if (record.null) {
        std::snprintf(line, sizeof(line), "%sVariant '%s' null", prefix.c_str(), shownName);
    } else if (record.HeldKind() == Kind::Unsupported) {
        std::snprintf(line, sizeof(line),
                      "%sInternal error: unsupported non-null type %s in Variant::Dump for '%s'",
                      prefix.c_str(), GetTypeName(), shownName);
    } else {
        std::snprintf(line, sizeof(line), "%sVariant '%s' of type %s = '%s'", prefix.c_str(), shownName,
                      Traits(record.HeldKind()).dumpWord, AsString().c_str());
    }
    WriteDumpLine(LoggerOrRegistered(logger), line);
}

void Variant::Delete(Record* record) noexcept { delete record; }

/// Returns whether the two values are equal; nothing when they are of a type that cannot be compared.
std::optional<bool> Variant::Equal(const Record& left, const Record& right) {
    if (left.name != right.name || left.null != right.null) return false;
    if (left.null) return true;
    if (left.HeldKind() != right.HeldKind()) return false;
    switch (left.HeldKind()) {
        case Kind::Text:
            return left.Held<std::string>() == right.Held<std::string>();
        case Kind::Integer:
            return left.Held<long long>() == right.Held<long long>();
        case Kind::Boolean:
            return left.Held<bool>() == right.Held<bool>();
        case Kind::Double:
            return left.Held<double>() == right.Held<double>();
        case Kind::Time:
            return left.Held<TimePoint>() == right.Held<TimePoint>();
        case Kind::Unsupported:
            break;
    }
    return std::nullopt;
}

template <class T>
void Variant::SetValue(T value) {
    Record& record = Own();
    record.Hold(std::move(value));
    record.null = false;
}

template <class T>
const T& Variant::Read() const {
    const Record& record = Get();
    if (record.null) throw null_Variant(std::string(typeid(T).name()) + " value is null");
    const T* const held = record.HeldIf<T>();
    if (held == nullptr) ThrowWrongType(typeid(T), record.HeldType());
    return *held;
}

Variant::Record& Variant::Own() {
    if (!m_record) m_record.reset(new Record);
    return *m_record;
}

const Variant::Record& Variant::None() noexcept {
    static const Record none;
    return none;
}

/// Equal values have equal hashes.
std::size_t Variant::Hash() const noexcept {
    const Record& record = Get();
    const std::size_t name = std::hash<std::string_view>()(record.name);
    if (record.null) return name;
    std::size_t value = 0;
    switch (record.HeldKind()) {
        case Kind::Text:
            value = std::hash<std::string_view>()(record.Held<std::string>());
            break;
        case Kind::Integer:
            value = std::hash<long long>()(record.Held<long long>());
            break;
        case Kind::Boolean:
            value = std::hash<bool>()(record.Held<bool>());
            break;
        case Kind::Double:
            value = std::hash<double>()(record.Held<double>());
            break;
        case Kind::Time:
            value = std::hash<std::int64_t>()(record.Held<TimePoint>().time_since_epoch().count());
            break;
        case Kind::Unsupported:
            break;
    }
    return name + 31 * (value + 1);
}

void Variant::ReportUnsupported(const char* operation) const {
    LogError("Internal error: unsupported type " + std::string(GetTypeName()) + " in Variant::" + operation);
    Dump(nullptr, 0);
}

std::ostream& operator<<(std::ostream& stream, const Variant& value) { return stream << value.AsString(); }

}  // namespace quillon
