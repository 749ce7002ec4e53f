#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Handle.h"

namespace quillon::platform {

/// Child processes and what it takes to wait for them. A failure is false, nothing
/// or an empty handle, with the reason in LastError(). Thread-safe.

/// The system's events and processes: HANDLE on Windows, a descriptor elsewhere.
struct ObjectTraits {
#ifdef _WIN32
    using Type = void*;
    static Type Invalid() noexcept { return nullptr; }
#else
    using Type = int;
    static Type Invalid() noexcept { return -1; }
#endif
    static void Close(Type value) noexcept;
};
using EventHandle = Handle<ObjectTraits>;

/// An unnamed event, not signalled; the wait that it ends resets it.
EventHandle CreateAutoResetEvent();
bool SignalEvent(const EventHandle& event);

struct ProcessRequest {
    std::string command;           ///< the whole command line, UTF-8
    std::string workingDirectory;  ///< library path, UTF-8; empty: the caller's
    /// The whole environment, UTF-8; null: the caller's.
    const std::map<std::string, std::string>* environment = nullptr;
    const FileHandle* output = nullptr;  ///< for standard output and error; null: they go nowhere
    const FileHandle* input = nullptr;   ///< for standard input; null: there is none
    bool killableAsTree = false;         ///< prepares for KillScope::Tree
};

/// Say what ended a wait; the values are the system's on Windows.
constexpr std::uint32_t kWaitProcess = 0;
constexpr std::uint32_t kWaitEvent = 1;
constexpr std::uint32_t kWaitTimeout = 0x102;
constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

/// A process started by this one. It inherits the handles that its request names,
/// and nothing else; it has no console window and default signal handling. Its
/// identifier is nobody else's while the object lives. A child that is let go before
/// its end goes on running and leaves no zombie behind.
class ChildProcess {
public:
    /// Starts a program. Returns nothing when it cannot be started: base::kFileNotFound when it does not
    /// exist, base::kInvalidDirectory when the working directory does not.
    static std::optional<ChildProcess> Start(const ProcessRequest& request);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    [[nodiscard]] std::uint32_t Id() const { return m_id; }
    /// Waits for the end of the process or for the event; the process goes first.
    [[nodiscard]] std::uint32_t Wait(const EventHandle& event,
                                     std::optional<std::chrono::milliseconds> limit) const;
    /// Returns the exit status of a process that has ended: its own, the one KillProcess() ended it with,
    /// or 128 plus the number of the signal that ended it.
    [[nodiscard]] std::optional<std::int32_t> ExitStatus() const;

private:
    ChildProcess(std::uint32_t id, ObjectTraits::Type handle) : m_id(id), m_handle(handle) {}

    std::uint32_t m_id = 0;  // 0 after a move
    /// Empty on a kernel that has no handles for processes.
    Handle<ObjectTraits> m_handle;
};

enum class KillScope { Process, Tree };
enum class KillResult { Killed, NotOpened, NotKilled };
/// Ends a process with an exit status. The scope Tree also ends its descendants
/// when it was started so. One that has ended already is not killed (base::kAccessDenied).
KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus, KillScope scope);

/// A file, open for reading at its start and gone once it is closed, that holds
/// these bytes; without any, the null device.
FileHandle MakeInputFile(std::string_view content);
/// Cuts an open file to at most `size` bytes.
bool CutOpenFile(const FileHandle& file, std::uint64_t size);

}  // namespace quillon::platform
