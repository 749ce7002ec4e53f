#pragma once

#include <optional>
#include <string>

namespace quillon::platform {

/// Returns a library path, or a name in one, for a wide function. Nothing, and ERROR_INVALID_NAME, for one
/// that holds a NUL: the system would act on the part before it.
std::optional<std::wstring> WidePath(const std::string& path);

}  // namespace quillon::platform
