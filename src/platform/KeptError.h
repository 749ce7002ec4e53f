#pragma once

#include <cstdint>

#include "platform/ErrorText.h"

namespace quillon::platform {

/// Holds the thread's last error and gives it back at its end, so that what is logged or cleaned up
/// meanwhile does not hide why an operation failed.
class KeptError {
public:
    KeptError() = default;
    ~KeptError() { SetLastErrorCode(m_code); }
    KeptError(const KeptError&) = delete;
    KeptError& operator=(const KeptError&) = delete;

    [[nodiscard]] std::uint32_t Code() const { return m_code; }

private:
    std::uint32_t m_code = LastError();
};

}  // namespace quillon::platform
