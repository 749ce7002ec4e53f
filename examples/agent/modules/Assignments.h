#pragma once

#include <string>

#include "quillon/InvocationResult.h"
#include "quillon/VariantList.h"

namespace quillon::agent {

/// Reads "NAME[:TYPE]=VALUE;..." into named values. TYPE is text (the default), integer,
/// float, boolean, or null without a VALUE; a ';' of a value is written twice. What cannot be read so is a
/// bad parameter `parameter`: false.
bool ReadAssignments(const char* parameter, const std::string& text, VariantList& values,
                     InvocationResult& result);

}  // namespace quillon::agent
