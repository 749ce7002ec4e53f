#pragma once

#include <cstddef>
#include <string>

#include "modules/Modules.h"

namespace quillon::agent {

enum class ListFormat { Text, Json, Markdown };

/// Describes each documented method whose name begins with the prefix, by its record: as a text for people,
/// as a JSON array of objects, or as a Markdown document. The lines of the text have at most `width`
/// characters, 40 to 100 whatever it says; 0 is 100.
std::string DescribeMethods(const ModuleList& modules, const std::string& prefix, ListFormat format,
                            std::size_t width);

}  // namespace quillon::agent
