#pragma once

#include <cstddef>
#include <string>

#include "modules/Modules.h"

namespace quillon::agent {

enum class ListFormat { Text, Json, Markdown };

/// Every documented method as its record describes it: for people, as an array of
/// objects, or as a document. Only those whose names begin with the prefix; a text has lines of at most
/// `width` characters, 100 when that is 0 or more.
std::string DescribeMethods(const ModuleList& modules, const std::string& prefix, ListFormat format,
                            std::size_t width);

}  // namespace quillon::agent
