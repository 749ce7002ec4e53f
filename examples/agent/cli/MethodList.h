#pragma once

#include <string>

#include "modules/Modules.h"

namespace quillon::agent {

enum class ListFormat { Text, Json, Markdown };

/// Every documented method as its record describes it: for people, as an array of
/// objects, or as a document.
std::string DescribeMethods(const ModuleList& modules, ListFormat format);

}  // namespace quillon::agent
