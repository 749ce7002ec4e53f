#pragma once

#include <optional>
#include <string>

#include "platform/Wbem.h"

namespace quillon::simulation {

/// Returns the English message of the system's module of WMI messages, else that of the system itself;
/// nothing when neither knows the code.
std::optional<std::wstring> WmiMessage(HRESULT code);
/// Returns the system's message alone.
std::optional<std::wstring> SystemMessage(HRESULT code);

}  // namespace quillon::simulation
