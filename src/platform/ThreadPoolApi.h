#pragma once

#include <functional>

namespace quillon::platform {

/// Runs a task, which must not throw, on a thread that nobody waits for: one of the
/// system's pool on Windows, where the library stays loaded until the task has ended,
/// and one of its own elsewhere. The task may still run while the process ends, so it
/// uses nothing that is destroyed then. A thread of its own has the name, see NameThread(). False when it
/// cannot be started.
bool RunInBackground(std::function<void()> task, const char* name);

}  // namespace quillon::platform
