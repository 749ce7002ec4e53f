#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
/// Waits for one of two events and resets it: kWaitProcess for the first, else kWaitEvent.
std::uint32_t AwaitEvents(const EventHandle& first, const EventHandle& second,
                          std::optional<std::chrono::milliseconds> limit);

struct ProcessRequest {
    std::string command;           ///< the whole command line, UTF-8
    std::string workingDirectory;  ///< library path, UTF-8; empty: the caller's
    /// The whole environment, UTF-8; null: the caller's.
    const std::map<std::string, std::string>* environment = nullptr;
    const FileHandle* output = nullptr;  ///< for standard output and error; null: they go nowhere
    const FileHandle* input = nullptr;   ///< for standard input; null: there is none
    bool killableAsTree = false;         ///< prepares for KillScope::Tree
    /// The system ends the process when the thread that starts it ends (Linux) or this process does
    /// (Windows), however that happens.
    bool endsWithUs = false;
    bool canBeAsked = false;  ///< prepares for a kill that asks first
};

/// Say what ended a wait; all but kWaitOutput have the system's values on Windows.
constexpr std::uint32_t kWaitProcess = 0;
constexpr std::uint32_t kWaitEvent = 1;
constexpr std::uint32_t kWaitOutput = 2;
constexpr std::uint32_t kWaitTimeout = 0x102;
constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

enum class KillScope { Process, Tree };
enum class KillResult { Killed, NotOpened, NotKilled };
struct KillRequest {
    std::int32_t exitStatus = 0;
    KillScope scope = KillScope::Process;
    /// How long the process may take to end by itself after it has been asked to (SIGTERM, CTRL_BREAK).
    std::chrono::milliseconds grace{0};
};
struct KillOutcome {
    KillResult result = KillResult::NotOpened;
    std::vector<std::uint32_t> survivors;  ///< those of the tree that could not be ended
};

/// How a process has ended, and what it has used; a field of that is 0 when the system does not tell it.
struct ProcessEnd {
    /// Its own, the one that Kill() ended it with, or 128 plus the number of the signal that ended it.
    std::int32_t status = 0;
    int signal = 0;                        ///< that ended it; 0 for none, and always on Windows
    std::chrono::milliseconds cpuTime{0};  ///< on Linux with the descendants that were waited for
    /// Bytes of memory at the peak; Linux does not tell it for one that has used less than this process.
    std::uint64_t peakMemory = 0;
};

class OutputCapture;

/// A process that somebody waits for; ChildProcess is the real one.
class RunningProcess {
public:
    virtual ~RunningProcess() = default;

    [[nodiscard]] virtual std::uint32_t Id() const = 0;
    /// Waits for the end of the process, for the event, or for output to read (null: for none); the
    /// process goes first, then the event.
    [[nodiscard]] virtual std::uint32_t Wait(const EventHandle& event, OutputCapture* output,
                                             std::optional<std::chrono::milliseconds> limit) const = 0;
    [[nodiscard]] virtual bool HasEnded() const = 0;
    /// Returns the end of a process that has ended. Waits for a kill that is under way.
    [[nodiscard]] virtual std::optional<ProcessEnd> End() const = 0;
    /// Ends the process. The scope Tree also ends its descendants when it was started so. One that has
    /// ended already is not killed (base::kAccessDenied). Holds no lock that concerns other children.
    [[nodiscard]] virtual KillOutcome Kill(const KillRequest& request) const = 0;

protected:
    RunningProcess() = default;
    RunningProcess(const RunningProcess&) = default;
    RunningProcess& operator=(const RunningProcess&) = default;
};

/// A process started by this one. It inherits the handles that its request names,
/// and nothing else; it has no console window and default signal handling. Its
/// identifier is nobody else's while the object lives. A child that is let go before
/// its end goes on running and leaves no zombie behind. Several threads may use an object at once.
class ChildProcess final : public RunningProcess {
public:
    /// Starts a program. Returns nothing when it cannot be started: base::kFileNotFound when it does not
    /// exist, base::kInvalidDirectory when the working directory does not.
    static std::optional<ChildProcess> Start(const ProcessRequest& request);

    ChildProcess(ChildProcess&& other) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess() override;

    [[nodiscard]] std::uint32_t Id() const override { return m_id; }
    [[nodiscard]] std::uint32_t Wait(const EventHandle& event, OutputCapture* output,
                                     std::optional<std::chrono::milliseconds> limit) const override;
    [[nodiscard]] bool HasEnded() const override;
    [[nodiscard]] std::optional<ProcessEnd> End() const override;
    [[nodiscard]] KillOutcome Kill(const KillRequest& request) const override;

    struct State;

private:
    ChildProcess(std::uint32_t id, std::shared_ptr<State> state) : m_id(id), m_state(std::move(state)) {}

    std::uint32_t m_id = 0;
    std::shared_ptr<State> m_state;  ///< empty after a move
};

/// Starts a program as ChildProcess::Start() does, or a command of the script in force in its place. Null
/// on failure.
std::shared_ptr<const RunningProcess> StartProcess(const ProcessRequest& request);

/// Ends a process by its identifier, whoever started it.
KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus);

/// A file, open for reading at its start and gone once it is closed, that holds
/// these bytes; without any, the null device.
FileHandle MakeInputFile(std::string_view content);

}  // namespace quillon::platform
