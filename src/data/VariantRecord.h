#pragma once

#include <boost/any.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <variant>

#include "quillon/Variant.h"

namespace quillon {

/// Names the alternatives of Value in their order. A value behind the null flag is kept but never shown.
enum class Kind : std::uint8_t { Text, Integer, Boolean, Double, Time, Unsupported };

/// The five kinds stand in the record itself, so that a cell is one block of
/// memory; any other type is held as it came.
using Value = std::variant<std::string, long long, bool, double, TimePoint, boost::any>;

struct Variant::Record {
    Record() = default;
    explicit Record(const std::string& text) : name(text), bindName(BindName(text)) {}
    template <class T>
    Record(const std::string& text, T held)
        : name(text), bindName(BindName(text)), null(false), value(std::in_place_type<T>, std::move(held)) {}
    Record(const Record& other)
        : name(other.name),
          bindName(other.bindName ? std::make_unique<const std::string>(*other.bindName) : nullptr),
          null(other.null),
          value(other.value) {}
    Record& operator=(const Record&) = delete;

    /// Returns the bind name; null when it equals the name.
    static std::unique_ptr<const std::string> BindName(const std::string& name);

    Kind HeldKind() const noexcept { return static_cast<Kind>(value.index()); }
    const std::type_info& HeldType() const noexcept;

    /// Returns the value; null when it is of another type.
    template <class T>
    const T* HeldIf() const noexcept {
        return std::get_if<T>(&value);
    }

    template <class T>
    const T& Held() const noexcept {
        return *HeldIf<T>();
    }

    template <class T>
    void Hold(T held) {
        value.emplace<T>(std::move(held));
    }

    std::string name;
    std::unique_ptr<const std::string> bindName;
    bool null = true;
    Value value = 0LL;
};

inline const Variant::Record& Variant::Get() const noexcept { return m_record ? *m_record : None(); }

}  // namespace quillon
