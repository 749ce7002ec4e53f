#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Handle.h"
#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// What can be told of processes from outside. A failure is nothing, with the reason
/// in LastError(). Any thread.

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

/// What this process uses; nothing for what the system does not tell.
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
