#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon::platform {

/// A library path as the system's: backslashes become slashes, "C:" is the volume
/// root, "\\?\" is dropped, and the escapes of LibraryName() become their bytes. A drive that does
/// not exist gives a path below /nonexistent. Slash paths are accepted as they are. A path with a
/// NUL gives nothing and sets errno to EILSEQ: the system would act on the part before it.
std::optional<std::string> NativePath(const std::string& path);
/// The same without trailing separators, which would lead through a link.
std::optional<std::string> NativeName(const std::string& path);
/// The system's name of one entry of a directory, as LibraryName() has given it. EILSEQ also for a
/// name that holds a slash.
std::optional<std::string> NativeElement(const std::string& name);
/// The way back: "C:" in front of an absolute path, slashes become backslashes, and names are
/// LibraryName()'s.
std::string LibraryPath(std::string_view nativePath);
/// Returns a native name, or a path with slashes, as UTF-8 without a backslash: each backslash and each
/// byte of invalid UTF-8 becomes the character U+F000 + byte of the private use area. Where a name has
/// such a character of its own, its bytes are escaped, so no two names look alike.
std::string LibraryName(std::string_view nativeName);
/// Mounts "C:" on a directory (without a trailing slash; empty: "/"). For tests, while
/// no other thread uses paths.
void SetVolumeRoot(const std::string& nativeFolder);

}  // namespace quillon::platform
