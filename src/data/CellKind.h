#pragma once

#include <cstdint>
#include <typeinfo>

#include "quillon/Variant.h"

namespace quillon {

enum class CellKind : std::uint8_t { Null, Text, Integer, Boolean, Double, Time };

inline CellKind KindOf(const Variant& cell) {
    if (cell.IsNull()) return CellKind::Null;
    if (cell.TypeIs(typeid(std::string))) return CellKind::Text;
    if (cell.TypeIs(typeid(long long))) return CellKind::Integer;
    if (cell.TypeIs(typeid(bool))) return CellKind::Boolean;
    if (cell.TypeIs(typeid(double))) return CellKind::Double;
    return CellKind::Time;
}

}  // namespace quillon
