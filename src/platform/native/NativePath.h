#pragma once

#include <string>
#include <string_view>

namespace quillon::platform {

/// A library path as the system's: backslashes become slashes, "C:" is the volume
/// root, "\\?\" is dropped. A drive that does not exist gives a path below
/// /nonexistent. Slash paths are accepted as they are.
std::string NativePath(const std::string& path);
/// The same without trailing separators, which would lead through a link.
std::string NativeName(const std::string& path);
/// The way back: "C:" in front of an absolute path, slashes become backslashes.
std::string LibraryPath(std::string_view nativePath);
/// Mounts "C:" on a directory (without a trailing slash; empty: "/"). For tests, while
/// no other thread uses paths.
void SetVolumeRoot(const std::string& nativeFolder);

}  // namespace quillon::platform
