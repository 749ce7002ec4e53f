#pragma once

#include <string>

namespace quillon {

/// Logs that a path could not be deleted, with the last error as the reason, and returns false; the last
/// error stays for the caller.
bool FailToErase(const std::string& path);

}  // namespace quillon
