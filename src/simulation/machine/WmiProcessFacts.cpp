#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <system_error>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/ProcessApi.h"
#include "platform/ProcessFactsApi.h"
#include "platform/native/NativePath.h"
#include "platform/native/ProcFile.h"
#include "platform/native/ProcessStat.h"
#include "platform/native/UserName.h"
#include "simulation/machine/WmiFacts.h"
#include "simulation/wmi/WmiPath.h"

namespace quillon::simulation {

namespace {

/// Return values of the methods of Win32_Process.
enum ReturnValue {
    kSuccess = 0,
    kAccessDenied = 2,
    kUnknownFailure = 8,
    kPathNotFound = 9,
    kInvalidParameter = 21,
};

struct Process {
    platform::ProcessStat stat;
    std::map<const char*, std::string> files = {};

    /// The number behind a label of a file that is read once; nothing when the process has ended, or is
    /// foreign.
    std::optional<long long> Number(const char* file, std::string_view label) {
        const auto [found, isNew] = files.try_emplace(file);
        if (isNew) found->second = '\n' + platform::ReadProcessFile(stat.id, file).value_or("");
        return platform::NumberAfter(found->second, label);
    }
};

constexpr const char* kStatus = "status";
constexpr const char* kIo = "io";

/// Throws when the system refuses the list: a process that is left out would seem to have ended.
std::vector<Process> ListProcesses() {
    const auto ids = platform::ListProcessIds();
    if (!ids) throw std::runtime_error("The processes cannot be listed");
    std::vector<Process> processes;
    for (const std::uint32_t id : *ids) {
        errno = ESRCH;  // what is malformed is none of ours either
        auto stat = platform::ReadProcessStat(static_cast<pid_t>(id));
        if (!stat && !IsGoneOrForeign(errno))
            throw std::system_error(errno, std::generic_category(), "A process cannot be read");
        if (stat && !stat->HasEnded()) processes.push_back({std::move(*stat)});
    }
    return processes;
}

/// Converts ticks of the kernel, in which it counts time, to units of 1/perSecond.
std::int64_t FromTicks(unsigned long long ticks, std::int64_t perSecond) {
    static const std::int64_t ticksPerSecond = ::sysconf(_SC_CLK_TCK);
    return static_cast<std::int64_t>(ticks) * (perSecond / ticksPerSecond);
}

std::optional<std::int64_t> StartOf(const Process& process) {
    const auto boot = BootTime();
    if (!boot) return std::nullopt;
    return *boot + FromTicks(process.stat.startTime, 1'000'000);
}

std::optional<std::string> CommandLineText(const Process& process) {
    const auto text = platform::CommandLineOf(static_cast<std::uint32_t>(process.stat.id));
    if (!text || text->empty()) return std::nullopt;  // also of a kernel thread
    return base::ToUtf8(*text);
}

std::optional<std::string> ExecutableOf(const Process& process) {
    constexpr std::string_view kDeleted = " (deleted)";
    std::error_code error;
    std::string path =
        std::filesystem::read_symlink("/proc/" + std::to_string(process.stat.id) + "/exe", error).string();
    if (error) return std::nullopt;
    if (path.ends_with(kDeleted)) path.resize(path.size() - kDeleted.size());
    return platform::LibraryPath(path);
}

WmiFact ThousandBytes(const std::optional<long long>& kilobytes) {
    return kilobytes ? WmiFact(*kilobytes * 1024) : WmiFact();
}

long long PageSize() { return ::sysconf(_SC_PAGESIZE); }

// --- Methods ---

std::optional<pid_t> ProcessOfPath(const std::wstring& path) {
    const auto parsed = ParseWmiPath(path);
    if (!parsed || parsed->keys.size() != 1) return std::nullopt;
    const std::string text = base::ToUtf8(parsed->keys.front().second);
    pid_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size() || id <= 0) return std::nullopt;
    return id;
}

const VARIANT* Find(const WmiValues& values, std::wstring_view name) {
    for (const auto& [each, value] : values) {
        if (base::EqualIgnoringCase(std::wstring_view(each), name)) return &value;
    }
    return nullptr;
}

std::string NarrowValue(const WmiValues& values, std::wstring_view name) {
    const VARIANT* const value = Find(values, name);
    if (value == nullptr || value->vt != VT_BSTR) return {};
    return base::ToUtf8({value->bstrVal, SysStringLen(value->bstrVal)});
}

void SetReturnValue(WmiValues& out, int value) {
    out.emplace_back(L"ReturnValue", WmiFact(value).As(CIM_UINT32));
}

ReturnValue ResultOf(std::uint32_t systemCode) {
    switch (systemCode) {
        case 2:    // no such file
        case 267:  // no such folder
            return kPathNotFound;
        case 5:
            return kAccessDenied;
        case 87:
        case 1113:  // no UTF-8
            return kInvalidParameter;
        default:
            return kUnknownFailure;
    }
}

HRESULT GetOwner(const std::wstring& path, const WmiValues&, WmiValues& out) {
    const auto id = ProcessOfPath(path);
    struct stat found {};
    if (!id || ::stat(("/proc/" + std::to_string(*id)).c_str(), &found) != 0) return WBEM_E_NOT_FOUND;
    const std::string user = platform::UserName(found.st_uid).value_or(std::to_string(found.st_uid));
    out.emplace_back(L"User", WmiFact(user).As(CIM_STRING));
    out.emplace_back(L"Domain", WmiFact(NodeName()).As(CIM_STRING));
    SetReturnValue(out, kSuccess);
    return S_OK;
}

HRESULT Create(const std::wstring&, const WmiValues& in, WmiValues& out) {
    platform::ProcessRequest request;
    request.command = NarrowValue(in, L"CommandLine");
    request.workingDirectory = NarrowValue(in, L"CurrentDirectory");
    if (request.command.empty()) {
        SetReturnValue(out, kInvalidParameter);
        return S_OK;
    }
    const auto child = platform::ChildProcess::Start(request);
    const ReturnValue result = child ? kSuccess : ResultOf(platform::LastError());
    if (child) out.emplace_back(L"ProcessId", WmiFact(child->Id()).As(CIM_UINT32));
    SetReturnValue(out, result);
    return S_OK;
}

HRESULT Terminate(const std::wstring& path, const WmiValues& in, WmiValues& out) {
    const auto id = ProcessOfPath(path);
    if (!id) return WBEM_E_NOT_FOUND;
    const VARIANT* const reason = Find(in, L"Reason");
    const int status = reason != nullptr && reason->vt == VT_I4 ? reason->lVal : 0;
    const auto killed = platform::KillProcess(static_cast<std::uint32_t>(*id), status);
    SetReturnValue(out, killed == platform::KillResult::Killed ? kSuccess : ResultOf(platform::LastError()));
    return S_OK;
}

std::vector<WmiMethod> Methods() {
    const _variant_t none;
    return {
        {L"Create",
         {{L"CommandLine", CIM_STRING, none}, {L"CurrentDirectory", CIM_STRING, none}},
         {{L"ProcessId", CIM_UINT32, none}, {L"ReturnValue", CIM_UINT32, none}},
         Create,
         true},
        {L"GetOwner",
         {},
         {{L"Domain", CIM_STRING, none}, {L"ReturnValue", CIM_UINT32, none}, {L"User", CIM_STRING, none}},
         GetOwner},
        {L"Terminate", {{L"Reason", CIM_UINT32, none}}, {{L"ReturnValue", CIM_UINT32, none}}, Terminate},
    };
}

}  // namespace

WmiClass ProcessClass() {
    using P = Process&;
    auto made = MakeLiveClass<Process>(
        L"Win32_Process", {L"Handle"},
        {
            {L"Caption", CIM_STRING, [](P p) { return p.stat.name; }},
            {L"CommandLine", CIM_STRING, [](P p) { return CommandLineText(p); }},
            {L"CreationClassName", CIM_STRING, [](P) { return "Win32_Process"; }},
            {L"CreationDate", CIM_DATETIME, [](P p) { return StartOf(p); }},
            {L"CSCreationClassName", CIM_STRING, [](P) { return "Win32_ComputerSystem"; }},
            {L"CSName", CIM_STRING, [](P) { return NodeName(); }},
            {L"Description", CIM_STRING, [](P p) { return p.stat.name; }},
            {L"ExecutablePath", CIM_STRING, [](P p) { return ExecutableOf(p); }},
            {L"ExecutionState", CIM_UINT16},
            {L"Handle", CIM_STRING, [](P p) { return std::to_string(p.stat.id); }},
            {L"HandleCount", CIM_UINT32,
             [](P p) {
                 return platform::CountEntries(("/proc/" + std::to_string(p.stat.id) + "/fd").c_str());
             }},
            {L"InstallDate", CIM_DATETIME},
            {L"KernelModeTime", CIM_UINT64, [](P p) { return FromTicks(p.stat.kernelTime, 10'000'000); }},
            {L"MaximumWorkingSetSize", CIM_UINT32},
            {L"MinimumWorkingSetSize", CIM_UINT32},
            {L"Name", CIM_STRING, [](P p) { return p.stat.name; }},
            {L"OSCreationClassName", CIM_STRING, [](P) { return "Win32_OperatingSystem"; }},
            {L"OSName", CIM_STRING},
            {L"OtherOperationCount", CIM_UINT64},
            {L"OtherTransferCount", CIM_UINT64},
            {L"PageFaults", CIM_UINT32, [](P p) { return p.stat.minorFaults + p.stat.majorFaults; }},
            {L"PageFileUsage", CIM_UINT32, [](P p) { return p.Number(kStatus, "\nVmSwap:"); }},
            {L"ParentProcessId", CIM_UINT32, [](P p) { return p.stat.parent; }},
            {L"PeakPageFileUsage", CIM_UINT32},
            {L"PeakVirtualSize", CIM_UINT64,
             [](P p) { return ThousandBytes(p.Number(kStatus, "\nVmPeak:")); }},
            {L"PeakWorkingSetSize", CIM_UINT32, [](P p) { return p.Number(kStatus, "\nVmHWM:"); }},
            {L"Priority", CIM_UINT32},
            {L"PrivatePageCount", CIM_UINT64,
             [](P p) {
                 return platform::PrivateWorkingSet(reinterpret_cast<HANDLE>(std::intptr_t{p.stat.id}));
             }},
            {L"ProcessId", CIM_UINT32, [](P p) { return p.stat.id; }},
            {L"ReadOperationCount", CIM_UINT64, [](P p) { return p.Number(kIo, "\nsyscr:"); }},
            {L"ReadTransferCount", CIM_UINT64, [](P p) { return p.Number(kIo, "\nrchar:"); }},
            {L"SessionId", CIM_UINT32, [](P p) { return p.stat.session; }},
            {L"Status", CIM_STRING},
            {L"TerminationDate", CIM_DATETIME},
            {L"ThreadCount", CIM_UINT32, [](P p) { return p.stat.threads; }},
            {L"UserModeTime", CIM_UINT64, [](P p) { return FromTicks(p.stat.userTime, 10'000'000); }},
            {L"VirtualSize", CIM_UINT64, [](P p) { return p.stat.virtualBytes; }},
            {L"WindowsVersion", CIM_STRING},
            {L"WorkingSetSize", CIM_UINT64, [](P p) { return p.stat.residentPages * PageSize(); }},
            {L"WriteOperationCount", CIM_UINT64, [](P p) { return p.Number(kIo, "\nsyscw:"); }},
            {L"WriteTransferCount", CIM_UINT64, [](P p) { return p.Number(kIo, "\nwchar:"); }},
        },
        ListProcesses);
    made.methods = Methods();
    return made;
}

}  // namespace quillon::simulation
