#pragma once

#include <string>
#include <vector>

#include "Module.h"
#include "quillon/MethodParameters.h"

namespace quillon::agent {

/// Turns "name=value" texts into the parameters of a call; each holds a '='.
///
/// The method's declaration decides how a value is read. A value that cannot be
/// read so, and one whose name the method does not declare, stays a text: it is
/// the method's binder that judges the call, with the same messages as ever.
MethodParameters ToParameters(const std::vector<std::string>& arguments, const Method& method);

}  // namespace quillon::agent
