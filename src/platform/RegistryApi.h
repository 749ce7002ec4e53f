#pragma once

#include <cstdint>
#include <string>

#include "platform/Handle.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// The registry: the system's on Windows, a simulated one elsewhere. Thread-safe.

struct RegistryTraits {
    using Type = HKEY;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept;
};
using RegistryKey = Handle<RegistryTraits>;

/// A key of the local machine's hive with full access rights; empty on failure,
/// see LastError().
RegistryKey OpenMachineKey(const std::string& path);
/// Reads a value's bytes, whatever its type. `size` says how many fit, and then how
/// many there are. Returns the system's code: 0, base::kFileNotFound
/// when there is no such value, base::kMoreData when more are there than fit. A null buffer asks for the
/// size. ANSI code page.
std::uint32_t QueryValue(HKEY key, const char* name, void* buffer, std::uint32_t& size);

}  // namespace quillon::platform
