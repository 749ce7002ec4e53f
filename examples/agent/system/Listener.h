#pragma once

#include <memory>
#include <string>

#include "system/Channel.h"

namespace quillon::agent {

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

}  // namespace quillon::agent
