#pragma once

#include <cstddef>
#include <string_view>

namespace quillon::agent {

/// A stream of bytes to and from one client. One thread reads and one writes at a time.
class Channel {
public:
    virtual ~Channel() = default;

    /// Waits for bytes and returns how many came; 0 at the end, on failure and after Stop().
    virtual std::size_t Read(char* bytes, std::size_t size) = 0;
    /// Writes all; false when the client is gone, or takes nothing for 5 seconds.
    virtual bool Write(std::string_view bytes) = 0;
    /// Returns whether the client takes no answer any more. One that only says no more is not gone, where the
    /// channel has two directions that end apart.
    virtual bool IsGone() = 0;
    /// Ends a Read() that waits, and all later ones. May be called on any thread, and by a callback.
    virtual void Stop() = 0;
};

}  // namespace quillon::agent
