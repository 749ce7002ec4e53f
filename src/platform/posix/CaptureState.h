#pragma once

#include <array>

#include "platform/Handle.h"
#include "platform/OutputCapture.h"

namespace quillon::platform {

struct OutputCapture::State {
    FileHandle reader, writer;
    bool hasEnded = false;
    std::array<char, 64 * 1024> piece;
};

/// Keeps a pipe's reading end open, and the pipe empty, until its last writer has gone. Of 256 such pipes
/// the oldest is closed for the next one.
void DrainInBackground(FileHandle reader);

}  // namespace quillon::platform
