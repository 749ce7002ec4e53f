#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

struct addrinfo;

namespace quillon::agent {

/// Facts that the library does not offer; implemented once in posix/ and once in
/// win32/. Texts are UTF-8.

/// Full path, in the system's own form, of the file that a process runs; nothing
/// when it has none, has ended, or may not be read.
std::optional<std::string> ReadExecutable(unsigned long pid);

/// Empty on failure.
std::string ReadHostName();

/// "Linux 6.1.0" or the like; empty on failure.
std::string ReadSystemName();

/// Bytes of main memory; 0 on failure.
unsigned long long ReadMemorySize();

/// The account that the agent runs as; empty on failure.
std::string ReadAccountName();

/// The socket addresses of a look-up's result and their lengths, in its order.
std::vector<std::pair<void*, unsigned long>> SocketAddresses(const addrinfo* list);

}  // namespace quillon::agent
