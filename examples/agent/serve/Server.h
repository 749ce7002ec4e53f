#pragma once

#include <cstddef>
#include <string>

#include "cli/Output.h"
#include "host/Host.h"

namespace quillon::agent {

/// How the agent serves.
struct ServeSettings {
    std::string address;       ///< as Listen() takes it; empty: standard input and output
    std::size_t parallel = 8;  ///< how many calls run at once
};

/// Serves until the client at standard input ends, or until the host shuts down. Calls that run are then
/// ended as by a shutdown, and answered. Returns 0; throws std::runtime_error when the address cannot
/// be opened. When a call does not end within ten seconds, the process ends with code 1.
int Serve(const Host& host, const ServeSettings& settings, Output& output);

}  // namespace quillon::agent
