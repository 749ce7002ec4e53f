#pragma once

#include <string>

#include "Modules.h"

namespace quillon::agent {

/// Every method with its parameters and columns, for people.
std::string DescribeAsText(const ModuleList& modules);
/// The same as an array of objects, one a method.
std::string DescribeAsJson(const ModuleList& modules);

}  // namespace quillon::agent
