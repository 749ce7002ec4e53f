#include "quillon/Variant.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <string_view>
#include <utility>

#include "base/TextOrEmpty.h"
#include "base/Utf8Cut.h"
#include "data/CellAccess.h"
#include "data/DumpWriter.h"
#include "data/NameCache.h"
#include "data/TextHash.h"
#include "platform/ThreadSlot.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/LogText.h"

namespace quillon {
namespace {

struct KindTraits {
    const char* dumpWord;
    int sqlType;
    const char* sqlName;
};

const KindTraits& Traits(CellKind kind) {
    static constexpr KindTraits kTraits[] = {
        {"null", 5, "NULL"},    {"string", 3, "TEXT"},  {"long long", 1, "INTEGER"},
        {"bool", 1, "INTEGER"}, {"double", 2, "FLOAT"}, {"time_point", 3, "TEXT"},
    };
    return kTraits[static_cast<std::size_t>(kind)];
}

const std::type_info& TypeOf(CellKind kind) {
    static constexpr const std::type_info* kTypes[] = {&typeid(void),      &typeid(std::string),
                                                       &typeid(long long), &typeid(bool),
                                                       &typeid(double),    &typeid(TimePoint)};
    return *kTypes[static_cast<std::size_t>(kind)];
}

std::weak_ordering CompareNumbers(double left, double right) {
    if (std::isnan(left) || std::isnan(right)) return std::isnan(left) <=> std::isnan(right);
    return left < right   ? std::weak_ordering::less
           : left > right ? std::weak_ordering::greater
                          : std::weak_ordering::equivalent;
}

/// Compares without rounding the integer; of two that are equal it is the lesser one.
std::weak_ordering CompareNumbers(long long left, double right) {
    constexpr double kPastEnd = 9223372036854775808.0;  // 2^63
    if (std::isnan(right) || right >= kPastEnd) return std::weak_ordering::less;
    if (right < -kPastEnd) return std::weak_ordering::greater;
    const double whole = std::trunc(right);
    if (const auto integer = static_cast<long long>(whole); integer != left) return left <=> integer;
    return right < whole ? std::weak_ordering::greater : std::weak_ordering::less;
}

constexpr std::size_t kLongestDumpLine = 1023;
static_assert(sizeof(Variant) <= 48);

/// Formats the number as "%g" does in the C locale.
std::string DoubleAsText(double value) {
    char buffer[20];
    const auto end = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 6).ptr;
    return std::string(buffer, end);
}

void LogError(const std::string& text) {
    if (ICLogger* logger = LoggerOrRegistered(nullptr)) {
        logger->Error("%s", LogText::OneLine(text).c_str());
    } else {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
}

[[noreturn]] void ThrowWrongType(const std::type_info& wanted, const std::type_info& found) {
    LogError(std::string(wanted.name()) + " value requested, found " + found.name() + " type");
    throw std::invalid_argument(std::string(wanted.name()) + " type was expected");
}

/// Holds the text of the time point that the current thread has read last.
std::string& TimeTextOfThread() {
    static const platform::ThreadSlot slot([](void* text) { delete static_cast<std::string*>(text); });
    if (auto* const text = static_cast<std::string*>(slot.Get())) return *text;
    auto made = std::make_unique<std::string>();
    if (!slot.Set(made.get())) throw std::bad_alloc();
    return *made.release();
}

}  // namespace

null_Variant::null_Variant(const std::string& message) : std::runtime_error(message) {}
null_Variant::~null_Variant() = default;

Variant::Variant() = default;
Variant::Variant(const char* value) : Variant(std::string(), value) {}
Variant::Variant(const std::string& value) : Variant(std::string(), value) {}
Variant::Variant(std::string&& value) : Variant(std::string(), std::move(value)) {}
Variant::Variant(long long value) : Variant(std::string(), value) {}
Variant::Variant(bool value) : Variant(std::string(), value) {}
Variant::Variant(double value) : Variant(std::string(), value) {}
Variant::Variant(TimePoint value) : Variant(std::string(), value) {}
Variant::Variant(const std::string& name, const char* value) : Variant(name, base::TextOrEmpty(value)) {}
Variant::Variant(const std::string& name, const std::string& value)
    : Variant(name, std::string_view(value)) {}
Variant::Variant(const std::string& name, std::string_view value) : Variant(TakeName(name), Kind::Null) {
    new (&m_value.text) std::string(value);
    SetKind(Kind::Text);  // last, as making the text may throw
}
Variant::Variant(const std::string& name, std::string&& value) : Variant(TakeName(name), Kind::Text) {
    new (&m_value.text) std::string(std::move(value));
}
Variant::Variant(const std::string& name, long long value) : Variant(TakeName(name), Kind::Integer) {
    m_value.integer = value;
}
Variant::Variant(const std::string& name, bool value) : Variant(TakeName(name), Kind::Boolean) {
    m_value.boolean = value;
}
Variant::Variant(const std::string& name, double value) : Variant(TakeName(name), Kind::Double) {
    m_value.real = value;
}
Variant::Variant(const std::string& name, TimePoint value) : Variant(TakeName(name), Kind::Time) {
    m_value.time = value;
}

Variant::Variant(const std::string& name, const std::type_index& type) : Variant(NullVariant(name)) {
    if (type == typeid(long long)) return;
    SetKind(type == typeid(bool) ? Kind::NullBoolean : Kind::Null);
    if (type == typeid(bool) || type == typeid(std::string) || type == typeid(double)) return;
    LogError("Internal error: unsupported type " + std::string(type.name()) + " in Variant(,type_info)");
}

Variant::Variant(const Variant& other) : m_head(other.m_head) {
    CopyValue(other);  // first, as it may throw
    detail::TakeUses(Name());
}

Variant& Variant::operator=(const Variant& other) {
    if (this != &other) *this = Variant(other);
    return *this;
}

Variant& Variant::operator=(Variant&& other) noexcept {
    if (this == &other) return *this;
    DestroyText();
    detail::SharedName* const former = Name();
    m_head = std::exchange(other.m_head, 0);
    TakeValue(other);
    detail::DropUses(former);
    return *this;
}

Variant Variant::NullVariant(const std::string& name) { return Variant(TakeName(name), Kind::NullInteger); }

Variant Variant::StringOrNullVariant(const std::string& name, const std::string& value) {
    return value.empty() ? NullVariant(name) : Variant(name, value);
}

void Variant::SetStringValue(const char* value) { SetStringValue(base::TextOrEmpty(value)); }
void Variant::SetStringValue(const std::string& value) { BecomeText(std::string(value)); }
void Variant::SetStringValue(std::string_view value) { BecomeText(std::string(value)); }
void Variant::SetStringValue(std::string&& value) { BecomeText(std::move(value)); }

void Variant::SetLongLongValue(long long value) {
    Become(Kind::Integer);
    m_value.integer = value;
}

void Variant::SetBoolValue(bool value) {
    Become(Kind::Boolean);
    m_value.integer = 0;
    m_value.boolean = value;
}

void Variant::SetDoubleValue(double value) {
    Become(Kind::Double);
    m_value.real = value;
}

void Variant::SetTimePoint(const TimePoint& value) {
    const TimePoint copy = value;  // it may lie in this object
    Become(Kind::Time);
    m_value.time = copy;
}

void Variant::SetToNull() {
    const Kind kind = HeldKind();
    if (kind <= Kind::Null) return;
    Become(kind == Kind::Integer   ? Kind::NullInteger
           : kind == Kind::Boolean ? Kind::NullBoolean
                                   : Kind::Null);
}

void Variant::SetName(const std::string& name) {
    detail::SharedName* const former = Name();
    m_head = reinterpret_cast<std::uintptr_t>(TakeName(name)) | static_cast<std::uintptr_t>(HeldKind());
    detail::DropUses(former);  // last, as the name given may be the old one
}

const std::string& Variant::GetBindName() const {
    const detail::SharedName* const name = Name();
    return name != nullptr && !name->bindText.empty() ? name->bindText : GetName();
}

bool Variant::TypeIs(const std::type_info& type) const { return !IsNull() && TypeOf(KindOf(*this)) == type; }

const std::type_info& Variant::GetType() const {
    if (IsNull()) throw null_Variant(GetName() + " is null");
    return TypeOf(KindOf(*this));
}

const char* Variant::GetTypeName() const { return IsNull() ? "null" : TypeOf(KindOf(*this)).name(); }

const std::string& Variant::ReadText() const {
    if (HeldKind() != Kind::Time) ThrowUnreadable<std::string>();
    return TimeTextOfThread() = DateTimeUtils::FormatTimeAsISO8601(m_value.time);
}

long long Variant::ReadInteger() const {
    if (HeldKind() == Kind::Boolean) return static_cast<long long>(m_value.boolean);
    if (HeldKind() == Kind::NullBoolean) ThrowUnreadable<bool>();
    ThrowUnreadable<long long>();
}

bool Variant::ReadBoolean() const {
    if (HeldKind() == Kind::Integer) return m_value.integer != 0;
    if (HeldKind() == Kind::NullInteger) ThrowUnreadable<long long>();
    ThrowUnreadable<bool>();
}

double Variant::ReadDouble() const { ThrowUnreadable<double>(); }

const TimePoint& Variant::GetTimePoint() const {
    if (HeldKind() != Kind::Time) ThrowUnreadable<TimePoint>();
    return m_value.time;
}

template <class T>
std::optional<T> Variant::TryGetKind() const {
    if (!TypeIs(typeid(T))) return std::nullopt;
    if constexpr (std::same_as<T, std::string>) return m_value.text;
    if constexpr (std::same_as<T, long long>) return m_value.integer;
    if constexpr (std::same_as<T, bool>) return m_value.boolean;
    if constexpr (std::same_as<T, double>) return m_value.real;
    if constexpr (std::same_as<T, TimePoint>) return m_value.time;
}

template QUILLON_API std::optional<std::string> Variant::TryGetKind() const;
template QUILLON_API std::optional<long long> Variant::TryGetKind() const;
template QUILLON_API std::optional<bool> Variant::TryGetKind() const;
template QUILLON_API std::optional<double> Variant::TryGetKind() const;
template QUILLON_API std::optional<TimePoint> Variant::TryGetKind() const;

std::string Variant::AsString() const {
    switch (KindOf(*this)) {
        case CellKind::Null:
            break;
        case CellKind::Text:
            return m_value.text;
        case CellKind::Integer:
            return std::to_string(m_value.integer);
        case CellKind::Boolean:
            return m_value.boolean ? "true" : "false";
        case CellKind::Double:
            return DoubleAsText(m_value.real);
        case CellKind::Time:
            return DateTimeUtils::FormatTimeAsISO8601(m_value.time);
    }
    return "null";
}

int Variant::SqlType() const { return Traits(KindOf(*this)).sqlType; }
const char* Variant::SqlTypeStr() const { return Traits(KindOf(*this)).sqlName; }

bool Variant::operator==(const Variant& other) const { return CellAccess::Equal(*this, other); }
bool Variant::operator!=(const Variant& other) const { return !(*this == other); }

std::weak_ordering Variant::operator<=>(const Variant& other) const {
    const int names = Name() == other.Name() ? 0 : GetName().compare(other.GetName());
    return names != 0 ? names <=> 0 : CompareValues(other);
}

std::weak_ordering Variant::CompareValues(const Variant& other) const {
    const CellKind kind = KindOf(*this), otherKind = KindOf(other);
    if (OrderOf(kind) != OrderOf(otherKind)) return OrderOf(kind) <=> OrderOf(otherKind);
    switch (kind) {
        case CellKind::Null:
            break;
        case CellKind::Text:
            return m_value.text.compare(other.m_value.text) <=> 0;
        case CellKind::Boolean:
            return m_value.boolean <=> other.m_value.boolean;
        case CellKind::Integer:
            if (otherKind == CellKind::Integer) return m_value.integer <=> other.m_value.integer;
            return CompareNumbers(m_value.integer, other.m_value.real);
        case CellKind::Double:
            if (otherKind == CellKind::Double) return CompareNumbers(m_value.real, other.m_value.real);
            return 0 <=> CompareNumbers(other.m_value.integer, m_value.real);
        case CellKind::Time:
            return m_value.time.time_since_epoch().count() <=> other.m_value.time.time_since_epoch().count();
    }
    return std::weak_ordering::equivalent;
}

void Variant::Dump(ICLogger* logger, unsigned int indent) const {
    std::string line =
        DumpIndent(indent) + "Variant '" + (GetName().empty() ? "*NO NAME*" : GetName()) + '\'';
    if (IsNull()) {
        line += " null";
    } else {
        line += std::string(" of type ") + Traits(KindOf(*this)).dumpWord + " = '" + AsString() + '\'';
    }
    WriteDumpLine(LoggerOrRegistered(logger), std::string(base::CutUtf8(line, kLongestDumpLine)));
}

const std::string& Variant::NoText() noexcept {
    static const std::string none;
    return none;
}

template <class T>
void Variant::ThrowUnreadable() const {
    if (IsNull()) throw null_Variant(std::string(typeid(T).name()) + " value is null");
    ThrowWrongType(typeid(T), TypeOf(KindOf(*this)));
}

void Variant::BecomeText(std::string&& text) noexcept {
    if (HeldKind() == Kind::Text) {
        m_value.text = std::move(text);
    } else {
        SetKind(Kind::Text);
        new (&m_value.text) std::string(std::move(text));
    }
}

std::size_t Variant::Hash() const noexcept {
    std::uint64_t value = 0;
    switch (KindOf(*this)) {
        case CellKind::Null:
            break;
        case CellKind::Text:
            value = TextHash(m_value.text);
            break;
        case CellKind::Integer:
            value = static_cast<std::uint64_t>(m_value.integer);
            break;
        case CellKind::Boolean:
            value = m_value.boolean ? 1 : 0;
            break;
        case CellKind::Double:
            value = std::hash<double>()(m_value.real);  // the same for both zeros
            break;
        case CellKind::Time:
            value = static_cast<std::uint64_t>(m_value.time.time_since_epoch().count());
            break;
    }
    const std::uint64_t name = CellAccess::NameHash(*this);
    const auto kind = static_cast<std::uint64_t>(KindOf(*this));
    return static_cast<std::size_t>(Mixed(Mixed(value ^ kind << 60) ^ name));
}

void PrintTo(const Variant& value, std::ostream* stream) {
    *stream << '\'' << value.GetName() << "' ";
    if (value.IsNull()) {
        *stream << "null";
    } else {
        *stream << Traits(KindOf(value)).dumpWord << " '" << value.AsString() << '\'';
    }
}

std::ostream& operator<<(std::ostream& stream, const Variant& value) { return stream << value.AsString(); }

}  // namespace quillon
