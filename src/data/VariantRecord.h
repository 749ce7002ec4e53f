#pragma once

#include <boost/any.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "quillon/Variant.h"

namespace quillon {

/// What a Variant holds; a value behind the null flag is kept but never shown.
enum class Kind : std::uint8_t { Text, Integer, Boolean, Double, Time, Unsupported };

template <class T>
inline constexpr Kind kKindOf = Kind::Unsupported;
template <>
inline constexpr Kind kKindOf<std::string> = Kind::Text;
template <>
inline constexpr Kind kKindOf<long long> = Kind::Integer;
template <>
inline constexpr Kind kKindOf<bool> = Kind::Boolean;
template <>
inline constexpr Kind kKindOf<double> = Kind::Double;
template <>
inline constexpr Kind kKindOf<TimePoint> = Kind::Time;

/// One block a cell, so that a Variant moves by pointer.
struct Variant::Record {
    Record() = default;
    explicit Record(const std::string& text) : name(text), bindName(BindName(text)) {}
    template <class T>
    Record(const std::string& text, T held)
        : name(text), bindName(BindName(text)), null(false), kind(kKindOf<T>), value(std::move(held)) {}
    Record(const Record& other)
        : name(other.name),
          bindName(other.bindName ? std::make_unique<const std::string>(*other.bindName) : nullptr),
          null(other.null),
          kind(other.kind),
          value(other.value) {}
    Record& operator=(const Record&) = delete;

    /// None when it equals the name.
    static std::unique_ptr<const std::string> BindName(const std::string& name);

    template <class T>
    const T& Held() const noexcept {
        return *boost::any_cast<T>(&value);
    }

    template <class T>
    void Hold(T held) {
        value = std::move(held);
        kind = kKindOf<T>;
    }

    std::string name;
    std::unique_ptr<const std::string> bindName;
    bool null = true;
    Kind kind = Kind::Integer;  // of the value: a switch costs less than comparing run-time types
    boost::any value = 0LL;
};

inline const Variant::Record& Variant::Get() const noexcept { return m_record ? *m_record : None(); }

}  // namespace quillon
