#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace quillon::agent {

/// A stream of bytes to and from one client; implemented once in posix/ and once in win32/. One thread
/// reads and one writes at a time.
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

/// A place where clients of the agent's own account, and of the superuser or the administrators, connect.
class Listener {
public:
    virtual ~Listener() = default;

    /// Waits for a client; null after Stop() and on a failure, which is logged.
    virtual std::unique_ptr<Channel> Accept() = 0;
    /// As Channel::Stop().
    virtual void Stop() = 0;
};

/// Opens the place of an address: the path of a Unix socket, or the name of a pipe (\\.\pipe\NAME) on
/// Windows. On failure returns null, and `fault` says why to people.
std::unique_ptr<Listener> Listen(const std::string& address, std::string& fault);

/// The process's standard input, as a channel reads it.
class StandardInput {
public:
    StandardInput();
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    std::size_t Read(char* bytes, std::size_t size);
    /// Returns whether a Read() has failed, which it has logged.
    bool HasFailed() const;
    void Stop();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

}  // namespace quillon::agent
