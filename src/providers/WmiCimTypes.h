#pragma once

#include "platform/Wbem.h"

namespace quillon {

/// CIM_UINT64 whose values past the signed range are texts. No type of CIM's own.
constexpr CIMTYPE kUint64OrText = 0x10000 | CIM_UINT64;

/// Added to a type whose values are read as WMI means them. No type of CIM's own.
constexpr CIMTYPE kAsMeant = 0x20000;

constexpr CIMTYPE kArrayFlag = CIM_FLAG_ARRAY;

constexpr bool IsArray(CIMTYPE type) { return (type & kArrayFlag) != 0; }

constexpr CIMTYPE ElementType(CIMTYPE type) { return type & ~kArrayFlag; }

constexpr bool IsInteger(CIMTYPE type) {
    return type == CIM_SINT16 || type == CIM_SINT32 || (type >= CIM_SINT8 && type <= CIM_UINT64) ||
           type == kUint64OrText;
}

constexpr bool IsReal(CIMTYPE type) { return type == CIM_REAL32 || type == CIM_REAL64; }

}  // namespace quillon
