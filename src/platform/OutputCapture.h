#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// A pipe from a command to this process. The command can neither cut nor seek what it has written. One
/// thread uses an object at a time. When the object goes while somebody can still write to the pipe, its
/// reading end lives on in a thread of the process, which reads to nowhere until the last writer has gone:
/// a daemon that a command left behind neither blocks nor fails. A failure is nothing or false, see
/// LastError().
class OutputCapture {
public:
    OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;
    ~OutputCapture();

    /// Makes the pipe.
    bool Open();
    /// The end for the command's output; no child gets it unless it is listed for it.
    [[nodiscard]] const FileHandle& ChildEnd() const;
    /// To be called once the command has started, so that the end of the last writer shows.
    void CloseChildEnd();

    /// What is there, at most one piece of it and without waiting; valid until the next call. Empty when
    /// nothing is there.
    std::optional<std::string_view> Read();
    /// Bytes that Read() would give in all at this moment.
    [[nodiscard]] std::uint64_t Available() const;
    /// Whether nobody can write any more and all has been read, as far as Read() has seen.
    [[nodiscard]] bool HasEnded() const;
    /// Closes the pipe for good: whoever writes to it fails, or ends by SIGPIPE.
    void Refuse();

    struct State;
    /// For ChildProcess::Wait().
    [[nodiscard]] State& Internals() const { return *m_state; }

private:
    std::unique_ptr<State> m_state;
};

}  // namespace quillon::platform
