#pragma once

#include <string>

#include "quillon/MethodMetadata.h"

namespace quillon::agent {

/// Returns the name of the parameter's type. A default makes a table's parameter one of a pointer to it,
/// which is a table to callers too.
std::string ParameterType(const MethodParameter& parameter);

}  // namespace quillon::agent
