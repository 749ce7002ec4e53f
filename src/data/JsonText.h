#pragma once

#include <string>
#include <string_view>

namespace quillon {

/// Appends a text as a JSON string, quotes included; invalid UTF-8 is repaired.
void AppendJsonString(std::string& output, std::string_view text);

}  // namespace quillon
