#pragma once

#include <cstddef>
#include <string_view>

namespace quillon::platform {

/// Writing to the process's standard streams without ever waiting for their reader.

enum class StandardStream { Output, Error };

enum class StreamUse {
    Closed,  ///< there is none
    Null,    ///< the null device, which a service's streams are: what is written is gone anyway
    Sink,    ///< a file or a device that never makes its writer wait
    Reader   ///< a terminal, pipe or socket, whose reader may be slow or gone
};

/// Tells what a stream leads to at this moment.
StreamUse UseOfStream(StandardStream stream);
/// Writes a text whose lines end in LF and returns how much of it was taken. A `use` of Reader takes as
/// much as fits at once, and nothing once nobody reads or without memory; no signal reaches the host. The
/// caller tells what UseOfStream() answered last and calls it on one thread at a time.
std::size_t WriteToStream(StandardStream stream, StreamUse use, std::string_view text) noexcept;
/// Returns whether a stream takes a short text now, without waiting.
bool TakesText(StandardStream stream);

}  // namespace quillon::platform
