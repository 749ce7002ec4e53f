#pragma once

#include <cstdint>
#include <functional>
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

/// Implements the operations above; a test replaces it.
struct RegistryCalls {
    std::function<HKEY(const std::string& path)> open;
    std::function<std::uint32_t(HKEY key, const char* name, void* buffer, std::uint32_t& size)> query;
    std::function<void(HKEY key)> close;
};
RegistryCalls SystemRegistryCalls();
/// For tests, while no key is open.
void ReplaceRegistryCalls(RegistryCalls calls);

}  // namespace quillon::platform
