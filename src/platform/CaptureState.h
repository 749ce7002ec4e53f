#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "platform/Handle.h"
#include "platform/OutputCapture.h"
#include "platform/ProcessApi.h"

namespace quillon::platform {

/// What a capture has on both systems.
struct OutputCapture::State {
    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    virtual ~State() = default;
    /// Ends a read that is under way.
    virtual void CancelRead() {}
    /// Makes the state of a system.
    static State* Make();

    FileHandle reader, writer;
    bool hasEnded = false;
    std::array<char, 64 * 1024> piece;
};

/// The pipes that the thread of the drain reads, in the way of a system.
class DrainedPipes {
public:
    DrainedPipes() = default;
    DrainedPipes(const DrainedPipes&) = delete;
    DrainedPipes& operator=(const DrainedPipes&) = delete;
    virtual ~DrainedPipes() = default;
    static std::unique_ptr<DrainedPipes> Make();

    virtual void Add(FileHandle reader) = 0;
    [[nodiscard]] virtual std::size_t Count() const = 0;
    virtual void CloseOldest() = 0;
    /// Waits for output or the event, and reads what is there. Pipes without a writer go.
    virtual void Read(const EventHandle& wake) = 0;
};

/// Keeps a pipe's reading end open, and the pipe empty, until its last writer has gone. Of 256 such pipes
/// the oldest is closed for the next one.
void DrainInBackground(FileHandle reader);
/// Starts the thread for pipes that wait for one because it could not be started.
void ResumeDrain();

}  // namespace quillon::platform
