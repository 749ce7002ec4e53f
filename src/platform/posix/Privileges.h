#pragma once

#include <string>

namespace quillon::platform {

/// For tests: whether the process was given a privilege; one taken away is off.
void SetPrivilegeHeld(const std::wstring& name, bool isHeld);
bool IsPrivilegeEnabled(const std::wstring& name);

}  // namespace quillon::platform
