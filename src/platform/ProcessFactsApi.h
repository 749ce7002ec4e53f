#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Handle.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// Facts about processes as others see them. A failure returns nothing, with the reason in LastError().
/// Thread-safe.

/// The handle's value as ProcessUtils takes it; outside Windows it is the process's
/// identifier and owns nothing.
struct ReadableProcessTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept;
};
using ReadableProcess = Handle<ReadableProcessTraits>;

/// Opens a process for queries and for reading its memory.
ReadableProcess OpenReadableProcess(std::uint32_t id);
/// The command line as the process was started; UTF-16. Elsewhere than on Windows its
/// arguments are joined as JoinCommandLine joins them, and a kernel thread's is empty.
std::optional<std::wstring> CommandLineOf(std::uint32_t id);
/// Bytes of resident memory that the process shares with no other; 0 when unknown.
/// On Linux: the private pages that the kernel counts, or where those may not be read
/// the resident pages without those that a file or shared memory backs.
long long PrivateWorkingSet(HANDLE process);
/// The identifiers of all processes in the system's order.
std::optional<std::vector<std::uint32_t>> ListProcessIds();

/// Holds what this process uses; a figure that the system does not tell is nothing.
struct OwnUsage {
    std::optional<long long> residentBytes;
    std::optional<long long> privateBytes;
    std::optional<long long> userMilliseconds;
    std::optional<long long> kernelMilliseconds;
    std::optional<long long> threads;
    std::optional<long long> handles;  ///< descriptors elsewhere
};
OwnUsage UsageOfThisProcess();

}  // namespace quillon::platform
