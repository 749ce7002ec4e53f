#include "platform/ProcessApi.h"

#include <algorithm>

#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/win32/CaptureState.h"
#include "platform/win32/ChildState.h"
#include "platform/win32/WindowsHeaders.h"

#include <psapi.h>  // after <windows.h>

namespace quillon::platform {

namespace {

constexpr const char* kInputPrefix = "vnt";

/// A new file of the current user alone that goes with its last handle.
FileHandle CreateScratchFile() {
    const auto folder = TemporaryFolder();
    const auto path = folder ? CreateTemporaryFile(*folder, kInputPrefix) : std::nullopt;
    if (!path) return FileHandle();
    FileHandle file(::CreateFileW(base::ToWide(*path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                  FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file) RemoveFile(*path);
    return file;
}

std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>> DurationOf(const FILETIME& time) {
    constexpr unsigned kHighBits = 32;
    return std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>(
        std::uint64_t{time.dwHighDateTime} << kHighBits | time.dwLowDateTime);
}

/// Gives the process its standard handles back: a console that it attaches to puts its own in their place,
/// which lead nowhere, or elsewhere, once it has left that console.
class KeptStandardHandles {
public:
    KeptStandardHandles() = default;
    KeptStandardHandles(const KeptStandardHandles&) = delete;
    KeptStandardHandles& operator=(const KeptStandardHandles&) = delete;
    ~KeptStandardHandles() {
        ::SetStdHandle(STD_INPUT_HANDLE, m_input);
        ::SetStdHandle(STD_OUTPUT_HANDLE, m_output);
        ::SetStdHandle(STD_ERROR_HANDLE, m_error);
    }

private:
    const HANDLE m_input = ::GetStdHandle(STD_INPUT_HANDLE);
    const HANDLE m_output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE m_error = ::GetStdHandle(STD_ERROR_HANDLE);
};

/// Sends CTRL_BREAK to the group of a console program. A process can do so in one console at a time, and not
/// while it has one of its own.
bool AskToEnd(std::uint32_t group) {
    static std::mutex& mutex = *new std::mutex;
    const std::lock_guard lock(mutex);
    const KeptStandardHandles kept;
    if (::AttachConsole(group) == 0) return false;
    const BOOL sent = ::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, group);
    ::FreeConsole();
    return sent != 0;
}

}  // namespace

void ObjectTraits::Close(Type value) noexcept {
    const DWORD error = ::GetLastError();
    ::CloseHandle(value);
    ::SetLastError(error);
}

EventHandle CreateAutoResetEvent() { return EventHandle(::CreateEventW(nullptr, FALSE, FALSE, nullptr)); }

bool SignalEvent(const EventHandle& event) { return ::SetEvent(event.Get()) != 0; }

std::uint32_t AwaitEvents(const EventHandle& first, const EventHandle& second,
                          std::optional<std::chrono::milliseconds> limit) {
    const HANDLE waited[] = {first.Get(), second.Get()};
    return ::WaitForMultipleObjects(2, waited, FALSE, limit ? static_cast<DWORD>(limit->count()) : INFINITE);
}

/// What is in the job goes on without this object, unless this process ends before it.
ChildProcess::~ChildProcess() {
    if (!m_state || m_state.use_count() > 1 || !m_state->job) return;
    if (HasEnded() && !m_state->isTree) return;
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION none{};
    ::SetInformationJobObject(m_state->job.Get(), JobObjectExtendedLimitInformation, &none, sizeof none);
}

std::uint32_t ChildProcess::Wait(const EventHandle& event, OutputCapture* output,
                                 std::optional<std::chrono::milliseconds> limit) const {
    static_assert(kWaitEvent == WAIT_OBJECT_0 + 1 && kWaitOutput == WAIT_OBJECT_0 + 2 &&
                  kWaitTimeout == WAIT_TIMEOUT && kWaitFailed == WAIT_FAILED);
    HANDLE waited[] = {m_state->process.Get(), event.Get(), nullptr};
    DWORD count = 2;
    if (output != nullptr) PipeOf(output->Internals()).BeginRead();
    if (output != nullptr && !output->HasEnded()) waited[count++] = PipeOf(output->Internals()).ready.Get();
    return ::WaitForMultipleObjects(count, waited, FALSE,
                                    limit ? static_cast<DWORD>(limit->count()) : INFINITE);
}

bool ChildProcess::HasEnded() const {
    return ::WaitForSingleObject(m_state->process.Get(), 0) == WAIT_OBJECT_0;
}

std::optional<ProcessEnd> ChildProcess::End() const {
    const std::lock_guard lock(m_state->mutex);
    DWORD status = 0;
    if (::GetExitCodeProcess(m_state->process.Get(), &status) == 0) return std::nullopt;
    ProcessEnd end;
    end.status = static_cast<std::int32_t>(status);
    FILETIME created{}, ended{}, kernel{}, user{};
    if (::GetProcessTimes(m_state->process.Get(), &created, &ended, &kernel, &user) != 0)
        end.cpuTime = std::chrono::ceil<std::chrono::milliseconds>(DurationOf(kernel) + DurationOf(user));
    PROCESS_MEMORY_COUNTERS memory{};
    if (::GetProcessMemoryInfo(m_state->process.Get(), &memory, sizeof memory) != 0)
        end.peakMemory = memory.PeakWorkingSetSize;
    return end;
}

KillOutcome ChildProcess::Kill(const KillRequest& request) const {
    const std::lock_guard lock(m_state->mutex);
    // A job of ended processes would let itself be ended.
    if (HasEnded()) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return {KillResult::NotKilled, {}};
    }
    const bool mayAsk = m_state->canBeAsked && request.grace.count() > 0;
    if (mayAsk && AskToEnd(m_id)) {
        ::WaitForSingleObject(m_state->process.Get(), static_cast<DWORD>(request.grace.count()));
    }
    const auto status = static_cast<UINT>(request.exitStatus);
    const bool tree = request.scope == KillScope::Tree && m_state->isTree;
    const bool killed = (tree ? ::TerminateJobObject(m_state->job.Get(), status)
                              : ::TerminateProcess(m_state->process.Get(), status)) != 0;
    return {killed || HasEnded() ? KillResult::Killed : KillResult::NotKilled, {}};
}

KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus) {
    const Handle<ObjectTraits> process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
    if (!process) return KillResult::NotOpened;
    if (::WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return KillResult::NotKilled;
    }
    const BOOL killed = ::TerminateProcess(process.Get(), static_cast<UINT>(exitStatus));
    return killed != 0 ? KillResult::Killed : KillResult::NotKilled;
}

FileHandle MakeInputFile(std::string_view content) {
    if (content.empty()) {
        return FileHandle(::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    }
    FileHandle file = CreateScratchFile();
    const bool isReady = file && WriteAll(file, content) &&
                         ::SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER;
    if (isReady) return file;
    return FileHandle();
}

}  // namespace quillon::platform
