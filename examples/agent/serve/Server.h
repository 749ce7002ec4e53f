#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "host/Host.h"

namespace quillon::agent {

/// How the agent serves.
struct ServeSettings {
    std::string address;       ///< as Listen() takes it; empty: standard input and output
    std::size_t parallel = 8;  ///< how many calls run at once
};

/// Writes to the process's standard output; false when that cannot be.
using WriteFunction = std::function<bool(std::string_view)>;

/// Serves until the client at standard input ends, or until the host shuts down. Calls that run are then
/// ended as by a shutdown, and answered. Returns the exit code: 0, or 1 when standard input cannot be read,
/// which is logged. Throws std::runtime_error when the address cannot be opened. When a call does not end
/// within ten seconds, the process ends with code 1.
int Serve(const Host& host, const ServeSettings& settings, const WriteFunction& writeToOutput);

}  // namespace quillon::agent
