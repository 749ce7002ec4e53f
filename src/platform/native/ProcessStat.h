#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace quillon::platform {

/// Holds the fields of /proc/PROCESS/stat. Times are in clock ticks, the start since that of the system.
struct ProcessStat {
    pid_t id = 0;
    std::string name;  ///< at most 15 bytes, of any kind
    char state = ' ';
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
    unsigned long long minorFaults = 0;
    unsigned long long majorFaults = 0;
    unsigned long long userTime = 0;
    unsigned long long kernelTime = 0;
    long long priority = 0;
    long long threads = 0;
    unsigned long long startTime = 0;  ///< tells processes of one identifier apart
    unsigned long long virtualBytes = 0;
    long long residentPages = 0;

    /// `state` is that of the first thread; others may go on.
    [[nodiscard]] bool IsFirstThreadOver() const { return state == 'Z' || state == 'X'; }
    [[nodiscard]] bool HasEnded() const { return IsFirstThreadOver() && threads <= 1; }
    /// Returns whether the process is neither stopped nor blocked in the kernel.
    [[nodiscard]] bool IsRunnable() const { return state == 'R' || state == 'S'; }
};

/// Reads the fields; nothing when there is no such process.
std::optional<ProcessStat> ReadProcessStat(pid_t process);

}  // namespace quillon::platform
