#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quillon::platform {

/// The thread's last failure as a Windows code (base/ErrorCodes.h) on both systems.
std::uint32_t LastError();
void SetLastErrorCode(std::uint32_t code);
/// Sets it, and returns false.
inline bool FailWithCode(std::uint32_t code) {
    SetLastErrorCode(code);
    return false;
}

/// The system's text of a Windows error code, line breaks folded, as the system
/// ends it; nothing when it has none, see LastError().
std::optional<std::string> ErrorCodeText(std::int32_t code);
/// The text of an NTSTATUS, as the system breaks its lines.
std::optional<std::string> NtstatusText(std::int32_t status);

}  // namespace quillon::platform
