#pragma once

#include <string>

namespace quillon::agent {

/// Loads a library, an absolute path, within the process. Null on failure, which GetLastError() tells.
void* LoadNow(const std::wstring& path);

/// Loads a library in another process of this program, which the sub-command of TryLibraryIfAsked() makes it
/// do, as a crash or a hang of its static constructors cannot be survived in the process itself. Returns why
/// it cannot be loaded, as a text for people; empty when it can. What a constructor has started ends with the
/// process.
std::string TryInProcess(const std::wstring& path);

}  // namespace quillon::agent
