#include "platform/ProcessApi.h"

#include <algorithm>

#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/FileContent.h"
#include "platform/win32/Jobs.h"
#include "platform/win32/WindowsHeaders.h"

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

}  // namespace

void ObjectTraits::Close(Type value) noexcept {
    const DWORD error = ::GetLastError();
    ::CloseHandle(value);
    ::SetLastError(error);
}

EventHandle CreateAutoResetEvent() { return EventHandle(::CreateEventW(nullptr, FALSE, FALSE, nullptr)); }

bool SignalEvent(const EventHandle& event) { return ::SetEvent(event.Get()) != 0; }

JobTable& Jobs() {
    static JobTable& table = *new JobTable;
    return table;
}

ChildProcess::~ChildProcess() {
    if (m_id == 0) return;
    JobTable& table = Jobs();
    const std::lock_guard lock(table.mutex);
    const auto job = table.jobs.find(m_id);
    if (job != table.jobs.end()) job->second.process = std::move(m_handle);
    std::erase_if(table.jobs, [](const auto& entry) {
        const Handle<ObjectTraits>& process = entry.second.process;
        return process && ::WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0;
    });
}

std::uint32_t ChildProcess::Wait(const EventHandle& event,
                                 std::optional<std::chrono::milliseconds> limit) const {
    static_assert(kWaitEvent == WAIT_OBJECT_0 + 1 && kWaitTimeout == WAIT_TIMEOUT &&
                  kWaitFailed == WAIT_FAILED);
    const HANDLE waited[] = {m_handle.Get(), event.Get()};
    return ::WaitForMultipleObjects(2, waited, FALSE, limit ? static_cast<DWORD>(limit->count()) : INFINITE);
}

std::optional<std::int32_t> ChildProcess::ExitStatus() const {
    DWORD status = 0;
    if (::GetExitCodeProcess(m_handle.Get(), &status) == 0) return std::nullopt;
    return static_cast<std::int32_t>(status);
}

KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus, KillScope scope) {
    const Handle<ObjectTraits> process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
    if (!process) return KillResult::NotOpened;
    // A job of ended processes would let itself be ended.
    if (::WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return KillResult::NotKilled;
    }
    const auto status = static_cast<UINT>(exitStatus);
    JobTable& table = Jobs();
    const std::lock_guard lock(table.mutex);
    const auto job = table.jobs.find(id);
    const bool tree = scope == KillScope::Tree && job != table.jobs.end();
    const BOOL killed = tree ? ::TerminateJobObject(job->second.job.Get(), status)
                             : ::TerminateProcess(process.Get(), status);
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

bool CutOpenFile(const FileHandle& file, std::uint64_t size) {
    LARGE_INTEGER current{};
    if (::GetFileSizeEx(file.Get(), &current) == 0) return false;
    if (static_cast<std::uint64_t>(current.QuadPart) <= size) return true;
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return ::SetFileInformationByHandle(file.Get(), FileEndOfFileInfo, &end, sizeof end) != 0;
}

}  // namespace quillon::platform
