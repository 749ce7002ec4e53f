#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quillon::agent {

// The agent as a service of the system; implemented once in posix/ and once in win32/. What fails throws
// std::runtime_error with the system's reason.

/// Tells the system that the agent serves, or that it is about to end: systemd by the datagrams of its
/// notification socket, when it has given one, and on Windows the service control manager, when it has
/// started the process. Does nothing otherwise. Thread-safe.
void TellReady();
void TellStopping();

/// Registers this program with the service control manager, to be started with the system as
/// "service run OPTIONS". Throws on systems that have none.
void InstallService(const std::vector<std::string>& options);
/// Asks the service to stop, and removes it. Throws on systems that have none.
void RemoveService();
/// Runs `body` as the service that the service control manager has started, and returns what it returns.
/// `stop` is called on another thread when the service is to end. Throws when the process was not started so.
int RunAsService(const std::function<int()>& body, const std::function<void()>& stop);

}  // namespace quillon::agent
