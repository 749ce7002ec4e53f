#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/Utf.h"
#include "platform/ProcessApi.h"
#include "platform/win32/ChildState.h"
#include "platform/win32/ShareModes.h"
#include "platform/win32/WidePath.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

using ObjectHandle = Handle<ObjectTraits>;

/// The handles that a child inherits, inheritable for this object's life, in the
/// form that process creation takes.
class InheritedHandles {
public:
    explicit InheritedHandles(const ProcessRequest& request) {
        // In place of a missing handle the system gives that of the child's console, which nobody sees: what
        // reads it would wait for ever.
        if (request.input == nullptr && request.output != nullptr) m_noInput = OpenNullDevice();
        const FileHandle* const input = m_noInput ? &m_noInput : request.input;
        Add(input);
        Add(request.output);
        if (input != nullptr) m_input = input->Get();
    }
    InheritedHandles(const InheritedHandles&) = delete;
    InheritedHandles& operator=(const InheritedHandles&) = delete;
    ~InheritedHandles() {
        if (List() != nullptr) ::DeleteProcThreadAttributeList(List());
        for (HANDLE handle : m_handles) ::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    }

    [[nodiscard]] bool Empty() const { return m_handles.empty(); }
    [[nodiscard]] HANDLE Input() const { return m_input; }

    /// The child inherits only these handles: other handles of this process may be inheritable.
    bool Prepare() {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_buffer.resize(size);
        if (::InitializeProcThreadAttributeList(List(), 1, 0, &size) == 0) {
            m_buffer.clear();
            return false;
        }
        return ::UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
                                           m_handles.size() * sizeof(HANDLE), nullptr, nullptr) != 0;
    }

    LPPROC_THREAD_ATTRIBUTE_LIST List() {
        return m_buffer.empty() ? nullptr : reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_buffer.data());
    }

private:
    void Add(const FileHandle* file) {
        if (file == nullptr) return;
        ::SetHandleInformation(file->Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        m_handles.push_back(file->Get());
    }

    static FileHandle OpenNullDevice() {
        return FileHandle(::CreateFileW(L"NUL", GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    FileHandle m_noInput;
    HANDLE m_input = nullptr;
    std::vector<HANDLE> m_handles;
    std::vector<unsigned char> m_buffer;
};

/// Orders the names of variables as the system does, without case.
struct NamePrecedes {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                      static_cast<int>(b.size()), TRUE) == CSTR_LESS_THAN;
    }
};

/// Returns the block in the system's form: sorted by name, every variable ended by a NUL, and one more
/// NUL. Of names that differ in case only, which are one for the system, the last one's value is kept.
std::wstring EnvironmentBlock(const std::map<std::string, std::string>& variables) {
    std::map<std::wstring, std::wstring, NamePrecedes> sorted;
    for (const auto& [name, value] : variables) sorted[base::ToWide(name)] = base::ToWide(value);
    std::wstring block;
    for (const auto& [name, value] : sorted) block += name + L'=' + value + L'\0';
    if (block.empty()) block += L'\0';
    return block + L'\0';
}

STARTUPINFOEXW StartUpInformation(const ProcessRequest& request, InheritedHandles& handles) {
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.lpAttributeList = handles.List();
    if (handles.Empty()) return start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = handles.Input();
    if (request.output != nullptr) {
        start.StartupInfo.hStdOutput = request.output->Get();
        start.StartupInfo.hStdError = request.output->Get();
    }
    return start;
}

bool NeedsJob(const ProcessRequest& request) { return request.killableAsTree || request.endsWithUs; }

bool Create(const ProcessRequest& request, InheritedHandles& handles, PROCESS_INFORMATION& created) {
    STARTUPINFOEXW start = StartUpInformation(request, handles);
    std::wstring command = base::ToWide(request.command);
    const auto directory = WidePath(request.workingDirectory);
    if (!directory) return false;
    std::wstring environment;
    if (request.environment != nullptr) environment = EnvironmentBlock(*request.environment);
    const DWORD suspended = NeedsJob(request) ? CREATE_SUSPENDED : 0;
    const DWORD group = request.canBeAsked ? CREATE_NEW_PROCESS_GROUP : 0;
    return ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, !handles.Empty(),
                            CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT |
                                suspended | group,
                            request.environment != nullptr ? environment.data() : nullptr,
                            directory->empty() ? nullptr : directory->c_str(), &start.StartupInfo,
                            &created) != 0;
}

/// Ends a process that was never let run, unless it is dismissed. Keeps the last error.
class SuspendedProcess {
public:
    explicit SuspendedProcess(HANDLE process) : m_process(process) {}
    SuspendedProcess(const SuspendedProcess&) = delete;
    SuspendedProcess& operator=(const SuspendedProcess&) = delete;
    ~SuspendedProcess() {
        if (m_process == nullptr) return;
        const DWORD error = ::GetLastError();
        ::TerminateProcess(m_process, 1);
        ::SetLastError(error);
    }

    bool Resume(HANDLE thread) {
        if (::ResumeThread(thread) == static_cast<DWORD>(-1)) return false;
        m_process = nullptr;
        return true;
    }

private:
    HANDLE m_process;
};

/// A job without the descendants lets them leave it without a word. One that ends with this process kills
/// what is in it when the system closes its handle.
bool LimitJob(HANDLE job, const ProcessRequest& request) {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    DWORD& flags = limits.BasicLimitInformation.LimitFlags;
    if (!request.killableAsTree) flags |= JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
    if (request.endsWithUs) flags |= JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    return flags == 0 ||
           ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) != 0;
}

/// Puts a suspended process into a job of its own before its first instruction. Only a tree cannot do
/// without one.
bool EnterJob(const PROCESS_INFORMATION& created, const ProcessRequest& request, ObjectHandle& job) {
    job.Reset(::CreateJobObjectW(nullptr, nullptr));
    if (job && LimitJob(job.Get(), request) && ::AssignProcessToJobObject(job.Get(), created.hProcess) != 0)
        return true;
    job.Reset();
    return !request.killableAsTree;
}

}  // namespace

std::optional<ChildProcess> ChildProcess::Start(const ProcessRequest& request) {
    InheritedHandles handles(request);
    if (!handles.Empty() && !handles.Prepare()) return std::nullopt;
    PROCESS_INFORMATION created{};
    auto state = std::make_shared<State>();  // first: the process must not be nobody's
    if (!Create(request, handles, created)) return std::nullopt;
    state->process.Reset(created.hProcess);
    const ObjectHandle thread(created.hThread);
    state->isTree = request.killableAsTree;
    state->canBeAsked = request.canBeAsked;
    if (!NeedsJob(request)) return ChildProcess(created.dwProcessId, std::move(state));
    SuspendedProcess suspended(created.hProcess);
    if (!EnterJob(created, request, state->job) || !suspended.Resume(thread.Get())) return std::nullopt;
    return ChildProcess(created.dwProcessId, std::move(state));
}

}  // namespace quillon::platform
