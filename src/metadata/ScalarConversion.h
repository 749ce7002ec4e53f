#pragma once

#include <string>
#include <typeinfo>

#include "quillon/Variant.h"

namespace quillon::metadata {

// What a variable of a type takes a value for. The typed getters throw, after an Error entry, when the
// value has another type.
inline void Convert(const Variant& value, std::string& target) { target = value.GetStringValue(); }
inline void Convert(const Variant& value, long long& target) { target = value.GetLongLongValue(); }
inline void Convert(const Variant& value, bool& target) { target = value.GetBoolValue(); }
inline void Convert(const Variant& value, double& target) {
    target = value.TypeIs(typeid(long long)) ? static_cast<double>(value.GetLongLongValue())
                                             : value.GetDoubleValue();
}

}  // namespace quillon::metadata
