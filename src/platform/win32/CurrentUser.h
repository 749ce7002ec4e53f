#pragma once

#include <string>
#include <vector>

namespace quillon::platform {

/// A TOKEN_USER of the process with the identifier it points to; empty on failure.
std::vector<unsigned char> CurrentUser();
/// The user's identifier as text, "S-1-5-..."; empty on failure.
std::wstring CurrentUserId();

}  // namespace quillon::platform
