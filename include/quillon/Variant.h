#pragma once

#include <chrono>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <utility>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/detail/SharedName.h"

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

/// Holds for the types of a character, which are no numbers.
template <class T>
concept Character = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;

/// Holds for the integer types that fit into the `long long` of a Variant and are neither that
/// type nor `bool`, a kind of its own, nor a character.
template <class T>
concept NarrowInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, long long> && !Character<T> &&
    (sizeof(T) < sizeof(long long) || (std::signed_integral<T> && sizeof(T) == sizeof(long long)));

/// Holds for the unsigned 64-bit integers, such as `std::size_t`.
template <class T>
concept WideUnsigned = std::unsigned_integral<T> && !Character<T> && sizeof(T) == sizeof(long long);

/// Holds one named, nullable value of one of five kinds: text (UTF-8), signed 64-bit integer,
/// boolean, double, time point. Cells of a table, parameters of a method and columns of SQL are
/// Variants.
///
/// A Variant owns its value: copies are deep, and a move hands the value over and leaves the
/// source unnamed and null. The getters check the kind: reading a null value throws
/// null_Variant and logs nothing; reading another kind logs the Error entry "T value requested,
/// found U type" on the registered logger, or writes it to standard error without one, and
/// throws std::invalid_argument.
///
/// One object is changed by one thread at a time, and not while others read it; any number of
/// threads may call its const operations at once. Different objects may be used on different
/// threads, copies of each other included: they share their name, whose uses are counted
/// atomically. A short text lies in the object itself.
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

    explicit Variant(std::string_view value) : Variant(std::string(), value) {}
    Variant(const std::string& name, std::string_view value);
    /// Makes an integer of any integer type, so that a call with an `int` is not ambiguous. An
    /// unsigned number past the range of `long long` becomes the end of that range.
    template <NarrowInteger T>
    explicit Variant(T value) : Variant(static_cast<long long>(value)) {}
    template <NarrowInteger T>
    Variant(const std::string& name, T value) : Variant(name, static_cast<long long>(value)) {}
    template <WideUnsigned T>
    explicit Variant(T value) : Variant(Saturated(value)) {}
    template <WideUnsigned T>
    Variant(const std::string& name, T value) : Variant(name, Saturated(value)) {}
    /// Makes a time point of that of another clock or with another unit; see ToTimePoint().
    template <class Clock, class Duration>
    explicit Variant(const std::chrono::time_point<Clock, Duration>& value) : Variant(ToTimePoint(value)) {}
    template <class Clock, class Duration>
    Variant(const std::string& name, const std::chrono::time_point<Clock, Duration>& value)
        : Variant(name, ToTimePoint(value)) {}
    /// Makes a null, or the value that is there.
    explicit Variant(std::nullptr_t) : Variant() {}
    Variant(const std::string& name, std::nullptr_t) : Variant(NullVariant(name)) {}
    explicit Variant(std::nullopt_t) : Variant() {}
    Variant(const std::string& name, std::nullopt_t) : Variant(NullVariant(name)) {}
    template <class T>
    explicit Variant(const std::optional<T>& value) : Variant(std::string(), value) {}
    template <class T>
    Variant(const std::string& name, const std::optional<T>& value)
        : Variant(value ? Variant(name, *value) : NullVariant(name)) {}
    /// Refuses pointers other than `char*`, which would silently become booleans. For a wide text
    /// use StringUtils::WideStringToNarrow().
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) explicit Variant(T* value) = delete;
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) Variant(const std::string& name, T* value)
    = delete;
    /// Refuses a character, which would silently become its number. For a text write "C" or
    /// std::string(1, c), for a number static_cast<int>(c).
    template <Character T>
    explicit Variant(T value) = delete;
    template <Character T>
    Variant(const std::string& name, T value) = delete;

    /// Copies the value and shares the name. The move takes both without allocating memory.
    Variant(const Variant& other);
    Variant& operator=(const Variant& other);
    Variant(Variant&& other) noexcept : m_head(std::exchange(other.m_head, 0)) { TakeValue(other); }
    Variant& operator=(Variant&& other) noexcept;
    ~Variant() {
        DestroyText();
        detail::DropUses(Name());
    }

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
    void SetStringValue(std::string_view value);
    void SetStringValue(std::nullptr_t) = delete;  // SetToNull()
    /// Refuses what would silently become another value: a character becomes its number with a
    /// cast, a text is compared with "true" by the caller.
    template <Character T>
    void SetLongLongValue(T value) = delete;
    template <class T>
    void SetBoolValue(T* value) = delete;
    /// Makes the value null and frees it; the name stays.
    void SetToNull();
    /// Renames the value; the bind name follows.
    void SetName(const std::string& name);

    /// Returns whether there is no value to read.
    [[nodiscard]] bool IsNull() const { return HeldKind() <= Kind::Null; }
    /// Returns the name; the reference is valid until SetName(), an assignment or the end of
    /// the object. The same holds for GetBindName().
    [[nodiscard]] const std::string& GetName() const { return Name() != nullptr ? Name()->text : NoText(); }
    /// Returns the name with every '-' replaced by '_', for use as an SQL parameter.
    [[nodiscard]] const std::string& GetBindName() const;
    /// Returns whether a value is there and is of exactly this type; a null is of no type.
    [[nodiscard]] bool TypeIs(const std::type_info& type) const;
    /// Returns the held type; throws null_Variant for a null.
    const std::type_info& GetType() const;
    /// Returns "null", or the compiler's name of the held type, which differs between
    /// compilers.
    const char* GetTypeName() const;
    /// Returns a text, or a time point as its ISO 8601 text, "2024-01-31T12:00:00.000Z". The
    /// reference to a text is valid until the object changes; that of a time point until the
    /// next such call on the same thread.
    const std::string& GetStringValue() const { return HeldKind() == Kind::Text ? m_value.text : ReadText(); }
    /// Returns an integer, or a boolean as 0 or 1.
    long long GetLongLongValue() const {
        return HeldKind() == Kind::Integer ? m_value.integer : ReadInteger();
    }
    /// Returns a boolean, or whether an integer is not 0.
    bool GetBoolValue() const { return HeldKind() == Kind::Boolean ? m_value.boolean : ReadBoolean(); }
    /// Returns a double; an integer is not converted.
    double GetDoubleValue() const { return HeldKind() == Kind::Double ? m_value.real : ReadDouble(); }
    /// Returns a time point; a text is not read as one. The reference is valid until the object
    /// changes.
    const TimePoint& GetTimePoint() const;

    /// Returns the value when it is held as exactly T, and nothing for a null or another kind.
    /// It logs nothing and throws only when memory for a text cannot be had.
    template <VariantKind T>
    [[nodiscard]] std::optional<T> TryGet() const {
        return TryGetKind<T>();
    }

    /// Returns the value as text, for people and logs: "null", "true" or "false", decimal
    /// integers, doubles with six significant digits as by "%g", time points in ISO 8601. It
    /// never throws for the five kinds.
    [[nodiscard]] std::string AsString() const;
    /// Returns SQLite's code of the storage class: 1 (SQLITE_INTEGER, booleans too), 2
    /// (SQLITE_FLOAT), 3 (SQLITE_TEXT, time points too), 5 (SQLITE_NULL).
    int SqlType() const;
    /// Returns the same as the word "INTEGER", "FLOAT", "TEXT" or "NULL".
    const char* SqlTypeStr() const;

    /// Compares name (case-sensitive), null flag, kind and value; an integer never equals a
    /// double, and NaN never equals anything. Two nulls of one name are equal.
    bool operator==(const Variant& other) const;
    bool operator!=(const Variant& other) const;
    /// Orders values for sorting: by name, then as CompareValues() does.
    std::weak_ordering operator<=>(const Variant& other) const;
    /// Orders two values whatever their names are: nulls, booleans, numbers, texts by their bytes,
    /// time points. An integer is compared with a double by value and stands before an equal one;
    /// NaN stands behind all numbers, so that every two values have an order.
    [[nodiscard]] std::weak_ordering CompareValues(const Variant& other) const;
    /// Returns a hash of name and value; equal Variants have equal hashes within one process.
    [[nodiscard]] std::size_t Hash() const noexcept;

    /// Writes one Debug line such as "Variant 'n' of type long long = '5'", at most 1,023 bytes
    /// long and indented by `indent`, at most 40, blanks. A null logger means the registered
    /// one, and standard error when there is none.
    void Dump(ICLogger* logger, unsigned int indent) const;

private:
    friend class VariantList;
    friend struct CellAccess;

    // Exported templates have no constraints: compilers, and versions of one, do not agree on the symbols of
    // those that have.
    template <class T>
    std::optional<T> TryGetKind() const;

    /// A null remembers whether it stands for an integer or a boolean: the message of the exception of
    /// a getter tells.
    enum class Kind : std::uint8_t { NullInteger, NullBoolean, Null, Text, Integer, Boolean, Double, Time };

    /// Only the member that the kind names is alive; none for a null.
    union Value {
        Value() : integer(0) {}
        ~Value() {}

        std::string text;
        long long integer;
        bool boolean;
        double real;
        TimePoint time;
    };

    /// The low bits of a pointer to a name, which are 0, keep the kind.
    static constexpr std::uintptr_t kKindBits = 7;
    static_assert(alignof(detail::SharedName) > kKindBits);

    template <WideUnsigned T>
    static long long Saturated(T value) {
        return std::in_range<long long>(value) ? static_cast<long long>(value)
                                               : std::numeric_limits<long long>::max();
    }

    /// Takes over the use of the name.
    explicit Variant(detail::SharedName* name, Kind kind) noexcept
        : m_head(reinterpret_cast<std::uintptr_t>(name) | static_cast<std::uintptr_t>(kind)) {}

    Kind HeldKind() const noexcept { return static_cast<Kind>(m_head & kKindBits); }
    detail::SharedName* Name() const noexcept {
        return reinterpret_cast<detail::SharedName*>(m_head & ~kKindBits);
    }
    void SetKind(Kind kind) noexcept { m_head = (m_head & ~kKindBits) | static_cast<std::uintptr_t>(kind); }
    void DestroyText() noexcept {
        if (HeldKind() == Kind::Text) m_value.text.~basic_string();
    }
    /// Moves the value of another object, whose kind this one has already; the other gets none.
    void TakeValue(Variant& other) noexcept {
        if (HeldKind() == Kind::Text) {
            new (&m_value.text) std::string(std::move(other.m_value.text));
            other.m_value.text.~basic_string();
        } else {
            std::memcpy(static_cast<void*>(&m_value), &other.m_value, sizeof(long long));
        }
    }
    /// Copies the value of another object, whose kind this one has already.
    void CopyValue(const Variant& other) {
        if (HeldKind() == Kind::Text) {
            new (&m_value.text) std::string(other.m_value.text);
        } else {
            std::memcpy(static_cast<void*>(&m_value), &other.m_value, sizeof(long long));
        }
    }

    static const std::string& NoText() noexcept;
    const std::string& ReadText() const;
    long long ReadInteger() const;
    bool ReadBoolean() const;
    double ReadDouble() const;
    template <class T>
    [[noreturn]] void ThrowUnreadable() const;
    void BecomeText(std::string&& text) noexcept;
    /// Ends the old value and begins one of a kind that is no text.
    void Become(Kind kind) noexcept {
        DestroyText();
        SetKind(kind);
    }
    bool EqualValue(const Variant& other) const noexcept;

    std::uintptr_t m_head = 0;  // the name, null when it is empty, and the kind
    Value m_value;
};

extern template QUILLON_API std::optional<std::string> Variant::TryGetKind() const;
extern template QUILLON_API std::optional<long long> Variant::TryGetKind() const;
extern template QUILLON_API std::optional<bool> Variant::TryGetKind() const;
extern template QUILLON_API std::optional<double> Variant::TryGetKind() const;
extern template QUILLON_API std::optional<TimePoint> Variant::TryGetKind() const;

/// Writes the value as AsString() gives it, without the name.
QUILLON_API std::ostream& operator<<(std::ostream& stream, const Variant& value);

/// Shows a Variant with its name and kind in the messages of GoogleTest, which finds it by its name.
QUILLON_API void PrintTo(const Variant& value, std::ostream* stream);

}  // namespace quillon

/// Hashes a Variant as its Hash() does.
template <>
struct std::hash<quillon::Variant> {
    std::size_t operator()(const quillon::Variant& value) const noexcept { return value.Hash(); }
};
