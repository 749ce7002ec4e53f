#pragma once

#include "platform/CaptureState.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// A named pipe, because an anonymous one cannot be waited for together with a process.
struct PipeState final : OutputCapture::State {
    /// Starts a read unless there is one.
    void BeginRead();
    void CancelRead() override;

    EventHandle ready;  ///< set when the read has come to its end, or could not begin
    OVERLAPPED read{};
    bool isReading = false;
    DWORD fault = ERROR_SUCCESS;  ///< why no read could begin
};

inline PipeState& PipeOf(OutputCapture::State& state) { return static_cast<PipeState&>(state); }

}  // namespace quillon::platform
