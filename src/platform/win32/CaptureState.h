#pragma once

#include <array>

#include "platform/OutputCapture.h"
#include "platform/ProcessApi.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// A named pipe, because an anonymous one cannot be waited for together with a process.
struct OutputCapture::State {
    FileHandle reader, writer;
    EventHandle ready;  ///< set when the read has come to its end
    OVERLAPPED read{};
    bool isReading = false;
    bool hasEnded = false;
    std::array<char, 64 * 1024> piece;

    /// Starts a read unless there is one.
    void BeginRead();
    void CancelRead();
};

/// Keeps a pipe's reading end open, and the pipe empty, until its last writer has gone. Of 256 such pipes
/// the oldest is closed for the next one.
void DrainInBackground(FileHandle reader);

}  // namespace quillon::platform
