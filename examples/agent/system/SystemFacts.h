#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

struct addrinfo;

namespace quillon::agent {

/// Facts that the library does not offer; implemented once in posix/ and once in
/// win32/. Texts are UTF-8.

/// Returns the full path, in the system's own form, of the file that a process runs;
/// nothing when it has none, has ended, or may not be read.
std::optional<std::string> ReadExecutable(unsigned long pid);

/// Returns the name of this machine; empty on failure.
std::string ReadHostName();

/// Returns "Linux 6.1.0" or the like; empty on failure.
std::string ReadSystemName();

/// Returns the bytes of main memory; 0 on failure.
unsigned long long ReadMemorySize();

/// Returns the account that the agent runs as; empty on failure.
std::string ReadAccountName();

/// Returns the socket addresses of a look-up's result and their lengths, in its order.
std::vector<std::pair<void*, unsigned long>> SocketAddresses(const addrinfo* list);

}  // namespace quillon::agent
