#pragma once

#include <optional>
#include <string_view>

namespace quillon::platform {

/// A resource embedded in this library, valid as long as it is loaded.
std::optional<std::string_view> EmbeddedResource(const char* type, int number);

}  // namespace quillon::platform
