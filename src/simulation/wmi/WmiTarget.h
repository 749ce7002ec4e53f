#pragma once

#include <string>
#include <string_view>

#include "simulation/wmi/WmiState.h"

namespace quillon::simulation {

/// Holds the target of an object's path: a class, or an instance of it.
struct WmiTarget {
    WmiSchemaPtr schema;
    WmiRowPtr row;      // null for a class
    std::wstring path;  // the full one, as the object itself gives it
};

/// How much of a live instance is to be found out.
enum class WmiDetail { Keys, All };

/// A path without a namespace is one of `nameSpace`. WBEM_E_INVALID_OBJECT_PATH, WBEM_E_NOT_FOUND, or what
/// the provider of a live class fails with.
HRESULT FindTarget(WmiState& state, const std::wstring& nameSpace, std::wstring_view path, WmiDetail detail,
                   WmiTarget& target);

}  // namespace quillon::simulation
