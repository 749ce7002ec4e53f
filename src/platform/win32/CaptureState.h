#pragma once

#include "platform/CaptureState.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// A named pipe, because an anonymous one cannot be waited for together with a process.
struct PipeState final : OutputCapture::State {
    /// Starts a read unless there is one.
    void BeginRead();
    void CancelRead() override;

    EventHandle ready;  ///< set when the read has come to its end
    OVERLAPPED read{};
    bool isReading = false;
};

inline PipeState& PipeOf(OutputCapture::State& state) { return static_cast<PipeState&>(state); }

}  // namespace quillon::platform
