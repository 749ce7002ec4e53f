#pragma once

#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeindex>
#include <typeinfo>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"

namespace quillon {

class ICLogger;

/// Thrown when a value is read from a null Variant.
class QUILLON_API null_Variant : public std::runtime_error {
public:
    explicit null_Variant(const std::string& message);
    null_Variant(const null_Variant&) = default;
    null_Variant& operator=(const null_Variant&) = default;
    ~null_Variant() override;
};

/// A kind of value that a Variant can hold.
template <class T>
concept VariantKind = std::same_as<T, std::string> || std::same_as<T, long long> || std::same_as<T, bool> ||
    std::same_as<T, double> || std::same_as<T, TimePoint>;

/// Integers that are narrower than the one that a Variant holds.
template <class T>
concept NarrowInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, long long> &&
    (sizeof(T) < sizeof(long long) || (std::signed_integral<T> && sizeof(T) == sizeof(long long)));

/// A named, nullable value of one of five kinds: text (UTF-8), signed 64-bit
/// integer, boolean, double, time point. Copies are deep; a move hands the value
/// over and leaves the source unnamed and null. Reading a null value throws
/// null_Variant; reading another kind logs an Error entry and throws
/// std::invalid_argument. One object is used by one thread at a time.
class QUILLON_API Variant {
public:
    /// Unnamed and null.
    Variant();
    /// A null pointer counts as the empty text, here and below.
    explicit Variant(const char* value);
    explicit Variant(const std::string& value);
    explicit Variant(std::string&& value);
    explicit Variant(long long value);
    explicit Variant(bool value);
    explicit Variant(double value);
    explicit Variant(TimePoint value);
    Variant(const std::string& name, const char* value);
    Variant(const std::string& name, const std::string& value);
    Variant(const std::string& name, std::string&& value);
    Variant(const std::string& name, long long value);
    Variant(const std::string& name, bool value);
    Variant(const std::string& name, double value);
    Variant(const std::string& name, TimePoint value);
    /// A null placeholder of a type, which must be a text, integer, boolean or
    /// double; any other type logs an Error entry and still gives a null.
    Variant(const std::string& name, const std::type_index& type);

    template <NarrowInteger T>
    explicit Variant(T value) : Variant(static_cast<long long>(value)) {}
    template <NarrowInteger T>
    Variant(const std::string& name, T value) : Variant(name, static_cast<long long>(value)) {}
    /// Pointers would silently become booleans.
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) explicit Variant(T* value) = delete;
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) Variant(const std::string& name, T* value)
    = delete;

    Variant(const Variant& other);
    Variant& operator=(const Variant& other);
    Variant(Variant&& other) noexcept = default;
    Variant& operator=(Variant&& other) noexcept = default;
    ~Variant() = default;

    static Variant NullVariant(const std::string& name);
    /// Null when the value is empty.
    static Variant StringOrNullVariant(const std::string& name, const std::string& value);

    /// The setters of a value clear the null flag.
    void SetStringValue(const char* value);
    void SetStringValue(const std::string& value);
    void SetStringValue(std::string&& value);
    void SetLongLongValue(long long value);
    void SetBoolValue(bool value);
    void SetDoubleValue(double value);
    void SetTimePoint(const TimePoint& value);
    void SetToNull();
    void SetName(const std::string& name);

    bool IsNull() const;
    const std::string& GetName() const;
    /// The name with every '-' as '_', for SQL.
    const std::string& GetBindName() const;
    /// False when null.
    bool TypeIs(const std::type_info& type) const;
    /// Throws null_Variant when null.
    const std::type_info& GetType() const;
    /// "null", or the run-time name of the held type.
    const char* GetTypeName() const;
    /// A text, or a time point as its ISO 8601 text: that reference is valid until
    /// the next such call on the same thread.
    const std::string& GetStringValue() const;
    /// An integer, or a boolean as 0 or 1.
    long long GetLongLongValue() const;
    /// A boolean, or whether an integer is not 0.
    bool GetBoolValue() const;
    double GetDoubleValue() const;
    const TimePoint& GetTimePoint() const;

    /// The value when it is held as exactly T; logs nothing, throws nothing.
    template <VariantKind T>
    std::optional<T> TryGet() const;

    /// The value as text; "null" when null. Doubles as by "%g".
    std::string AsString() const;
    /// SQLite's fundamental datatype codes: 1 integer, 2 float, 3 text, 5 null.
    int SqlType() const;
    const char* SqlTypeStr() const;

    /// Name, null flag, kind and value; NaN never equals.
    bool operator==(const Variant& other) const;
    bool operator!=(const Variant& other) const;

    /// Writes one Debug line of at most 1,023 characters, indented by up to 40
    /// blanks. A null logger means the registered one, else standard error.
    void Dump(ICLogger* logger, unsigned int indent) const;

private:
    friend class VariantList;

    struct Record;
    struct Deleter {
        void operator()(Record* record) const noexcept { Delete(record); }
    };

    static void Delete(Record* record) noexcept;
    static std::optional<bool> Equal(const Record& left, const Record& right);

    template <class T>
    void SetValue(T value);
    template <class T>
    const T& Read() const;
    Record& Own();
    const Record& Get() const noexcept;
    static const Record& None() noexcept;
    std::size_t Hash() const noexcept;
    void ReportUnsupported(const char* operation) const;

    std::unique_ptr<Record, Deleter> m_record;  // none after a move
};

/// The value as by AsString().
QUILLON_API std::ostream& operator<<(std::ostream& stream, const Variant& value);

}  // namespace quillon
