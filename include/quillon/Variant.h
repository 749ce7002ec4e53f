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

/// Reports that a value was read from a null Variant. The message is the requested type's
/// run-time name followed by " value is null", or, from GetType(), the Variant's name followed
/// by " is null".
class QUILLON_API null_Variant : public std::runtime_error {
public:
    /// Takes the message that what() returns.
    explicit null_Variant(const std::string& message);
    null_Variant(const null_Variant&) = default;
    null_Variant& operator=(const null_Variant&) = default;
    ~null_Variant() override;
};

/// Holds for the five types that a Variant can hold, and for no type that merely converts to
/// one.
template <class T>
concept VariantKind = std::same_as<T, std::string> || std::same_as<T, long long> || std::same_as<T, bool> ||
    std::same_as<T, double> || std::same_as<T, TimePoint>;

/// Holds for the integer types that fit into the `long long` of a Variant and are neither that
/// type nor `bool`, a kind of its own. Unsigned 64-bit integers, whose values may not fit, are
/// excluded.
template <class T>
concept NarrowInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, long long> &&
    (sizeof(T) < sizeof(long long) || (std::signed_integral<T> && sizeof(T) == sizeof(long long)));

/// Holds one named, nullable value of one of five kinds: text (UTF-8), signed 64-bit integer,
/// boolean, double, time point. Cells of a table, parameters of a method and columns of SQL are
/// Variants.
///
/// A Variant owns its value: copies are deep, and a move hands the value over and leaves the
/// source unnamed and null. The getters check the kind: reading a null value throws
/// null_Variant and logs nothing; reading another kind logs the Error entry "T value requested,
/// found U type" on the registered logger, or writes it to standard error without one, and
/// throws std::invalid_argument. One object is used by one thread at a time; different objects
/// share nothing.
///
/// @code
/// const Variant size("file-size", 4096);
/// if (!size.IsNull() && size.TypeIs(typeid(long long))) {
///     std::cout << size.GetBindName() << " = " << size.GetLongLongValue() << '\n';  // file_size = 4096
/// }
/// const std::optional<std::string> text = size.TryGet<std::string>();  // nothing: it is an integer
/// std::cout << text.value_or(size.AsString()) << '\n';                 // 4096
/// @endcode
class QUILLON_API Variant {
public:
    /// Makes an unnamed null.
    Variant();
    /// Makes an unnamed value of the argument's kind. The text is copied, or moved from an
    /// rvalue; a null pointer counts as the empty text and does not make a null.
    explicit Variant(const char* value);
    explicit Variant(const std::string& value);
    explicit Variant(std::string&& value);
    explicit Variant(long long value);
    explicit Variant(bool value);
    explicit Variant(double value);
    explicit Variant(TimePoint value);
    /// Makes a value with a name, as above. The name may be empty and is not checked.
    Variant(const std::string& name, const char* value);
    Variant(const std::string& name, const std::string& value);
    Variant(const std::string& name, std::string&& value);
    Variant(const std::string& name, long long value);
    Variant(const std::string& name, bool value);
    Variant(const std::string& name, double value);
    Variant(const std::string& name, TimePoint value);
    /// Makes a null placeholder that remembers a type: std::string, long long, bool or double.
    /// Any other type, TimePoint included, logs the Error entry "Internal error: unsupported
    /// type T in Variant(,type_info)" and still makes a null.
    Variant(const std::string& name, const std::type_index& type);

    /// Makes an integer of any narrower integer type, so that a call with an `int` is not
    /// ambiguous.
    template <NarrowInteger T>
    explicit Variant(T value) : Variant(static_cast<long long>(value)) {}
    template <NarrowInteger T>
    Variant(const std::string& name, T value) : Variant(name, static_cast<long long>(value)) {}
    /// Refuses pointers other than `char*`, which would silently become booleans.
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) explicit Variant(T* value) = delete;
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) Variant(const std::string& name, T* value)
    = delete;

    /// Copies the name and the value. The move takes both without allocating memory.
    Variant(const Variant& other);
    Variant& operator=(const Variant& other);
    Variant(Variant&& other) noexcept = default;
    Variant& operator=(Variant&& other) noexcept = default;
    ~Variant() = default;

    /// Returns a null of that name.
    static Variant NullVariant(const std::string& name);
    /// Returns the text, or a null of that name when the text is empty.
    static Variant StringOrNullVariant(const std::string& name, const std::string& value);

    /// Replaces the value, whatever its kind was, and clears the null flag; the name stays. A
    /// null pointer counts as the empty text.
    void SetStringValue(const char* value);
    void SetStringValue(const std::string& value);
    void SetStringValue(std::string&& value);
    void SetLongLongValue(long long value);
    void SetBoolValue(bool value);
    void SetDoubleValue(double value);
    void SetTimePoint(const TimePoint& value);
    /// Makes the value null; the name stays.
    void SetToNull();
    /// Renames the value; the bind name follows.
    void SetName(const std::string& name);

    /// Returns whether there is no value to read.
    bool IsNull() const;
    /// Returns the name; the reference is valid until SetName(), an assignment or the end of
    /// the object. The same holds for GetBindName().
    const std::string& GetName() const;
    /// Returns the name with every '-' replaced by '_', for use as an SQL parameter.
    const std::string& GetBindName() const;
    /// Returns whether a value is there and is of exactly this type; a null is of no type.
    bool TypeIs(const std::type_info& type) const;
    /// Returns the held type; throws null_Variant for a null.
    const std::type_info& GetType() const;
    /// Returns "null", or the compiler's name of the held type, which differs between
    /// compilers.
    const char* GetTypeName() const;
    /// Returns a text, or a time point as its ISO 8601 text, "2024-01-31T12:00:00.000Z". The
    /// reference to a text is valid until the object changes; that of a time point until the
    /// next such call on the same thread.
    const std::string& GetStringValue() const;
    /// Returns an integer, or a boolean as 0 or 1.
    long long GetLongLongValue() const;
    /// Returns a boolean, or whether an integer is not 0.
    bool GetBoolValue() const;
    /// Returns a double; an integer is not converted.
    double GetDoubleValue() const;
    /// Returns a time point; a text is not read as one. The reference is valid until the object
    /// changes.
    const TimePoint& GetTimePoint() const;

    /// Returns the value when it is held as exactly T, and nothing for a null or another kind.
    /// It logs nothing and throws only when memory for a text cannot be had.
    template <VariantKind T>
    std::optional<T> TryGet() const;

    /// Returns the value as text, for people and logs: "null", "true" or "false", decimal
    /// integers, doubles with six significant digits as by "%g", time points in ISO 8601. It
    /// never throws for the five kinds.
    std::string AsString() const;
    /// Returns SQLite's code of the storage class: 1 (SQLITE_INTEGER, booleans too), 2
    /// (SQLITE_FLOAT), 3 (SQLITE_TEXT, time points too), 5 (SQLITE_NULL).
    int SqlType() const;
    /// Returns the same as the word "INTEGER", "FLOAT", "TEXT" or "NULL".
    const char* SqlTypeStr() const;

    /// Compares name (case-sensitive), null flag, kind and value; an integer never equals a
    /// double, and NaN never equals anything. Two nulls of one name are equal.
    bool operator==(const Variant& other) const;
    bool operator!=(const Variant& other) const;

    /// Writes one Debug line such as "Variant 'n' of type long long = '5'", at most 1,023 bytes
    /// long and indented by `indent`, at most 40, blanks. A null logger means the registered
    /// one, and standard error when there is none.
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

/// Writes the value as AsString() gives it, without the name.
QUILLON_API std::ostream& operator<<(std::ostream& stream, const Variant& value);

}  // namespace quillon
