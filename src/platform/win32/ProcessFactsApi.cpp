#include "platform/ProcessFactsApi.h"

#include <cstring>
#include <span>

#include "base/WorkingSet.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

namespace quillon::platform {

namespace {

using QueryInformation = LONG(WINAPI*)(HANDLE, ULONG, void*, ULONG, ULONG*);

// The documented layouts of a 64-bit process.
constexpr std::uint64_t kParametersInBlock = 0x20;
constexpr std::uint64_t kCommandLineInParameters = 0x70;

struct RemoteText {
    std::uint16_t length;  ///< bytes
    std::uint16_t room;
    std::uint32_t padding;
    std::uint64_t buffer;
};

QueryInformation FindQueryInformation() {
    const HMODULE module = ::GetModuleHandleW(L"ntdll.dll");
    if (module == nullptr) return nullptr;
    const FARPROC procedure = ::GetProcAddress(module, "NtQueryInformationProcess");
    return reinterpret_cast<QueryInformation>(reinterpret_cast<void*>(procedure));
}

bool ReadMemory(const ReadableProcess& process, std::uint64_t address, void* buffer, std::size_t size) {
    SIZE_T count = 0;
    return ::ReadProcessMemory(process.Get(), reinterpret_cast<const void*>(address), buffer, size, &count) !=
               0 &&
           count == size;
}

long long Milliseconds(const FILETIME& time) {
    constexpr std::uint64_t kTicks = 10'000;
    return static_cast<long long>((std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) / kTicks);
}

std::optional<long long> CountThreads() {
    const FileHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    if (!snapshot) return std::nullopt;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    long long count = 0;
    for (BOOL more = ::Thread32First(snapshot.Get(), &entry); more != 0;
         more = ::Thread32Next(snapshot.Get(), &entry)) {
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId();
    }
    return count;
}

}  // namespace

void ReadableProcessTraits::Close(Type value) noexcept { FileTraits::Close(value); }

ReadableProcess OpenReadableProcess(std::uint32_t id) {
    return ReadableProcess(::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
}

std::optional<std::wstring> CommandLineOf(std::uint32_t id) {
    const QueryInformation query = FindQueryInformation();
    if (query == nullptr) return std::nullopt;
    const ReadableProcess process = OpenReadableProcess(id);
    if (!process) return std::nullopt;

    PROCESS_BASIC_INFORMATION information{};
    if (query(process.Get(), ProcessBasicInformation, &information, sizeof information, nullptr) != 0) {
        return std::nullopt;
    }
    const auto block = reinterpret_cast<std::uint64_t>(information.PebBaseAddress);
    std::uint64_t parameters = 0;
    RemoteText remote{};
    if (!ReadMemory(process, block + kParametersInBlock, &parameters, sizeof parameters) ||
        !ReadMemory(process, parameters + kCommandLineInParameters, &remote, sizeof remote)) {
        return std::nullopt;
    }
    std::wstring text(remote.length / sizeof(wchar_t), L'\0');
    if (!ReadMemory(process, remote.buffer, text.data(), text.size() * sizeof(wchar_t))) return std::nullopt;
    return text;
}

long long PrivateWorkingSet(HANDLE process) {
    return base::CountPrivateBytes([process](std::span<std::uint64_t> buffer) -> std::uint32_t {
        const auto size = static_cast<DWORD>(buffer.size_bytes());
        return ::QueryWorkingSet(process, buffer.data(), size) != 0 ? ERROR_SUCCESS : ::GetLastError();
    });
}

std::optional<std::vector<std::uint32_t>> ListProcessIds() {
    // A full buffer does not tell how many identifiers are missing.
    for (std::vector<DWORD> ids(1024);; ids.resize(ids.size() * 2)) {
        DWORD bytes = 0;
        const auto room = static_cast<DWORD>(ids.size() * sizeof(DWORD));
        if (::EnumProcesses(ids.data(), room, &bytes) == 0) return std::nullopt;
        if (bytes < room) return std::vector<std::uint32_t>(ids.data(), ids.data() + bytes / sizeof(DWORD));
    }
}

/// No process is without private memory or handles: a system that answers 0 does not tell.
OwnUsage UsageOfThisProcess() {
    OwnUsage usage;
    const HANDLE self = ::GetCurrentProcess();
    PROCESS_MEMORY_COUNTERS_EX memory{};
    if (::GetProcessMemoryInfo(self, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof memory) !=
        0) {
        usage.residentBytes = static_cast<long long>(memory.WorkingSetSize);
        if (memory.PrivateUsage != 0) usage.privateBytes = static_cast<long long>(memory.PrivateUsage);
    }
    FILETIME created{}, ended{}, kernel{}, user{};
    if (::GetProcessTimes(self, &created, &ended, &kernel, &user) != 0) {
        usage.userMilliseconds = Milliseconds(user);
        usage.kernelMilliseconds = Milliseconds(kernel);
    }
    usage.threads = CountThreads();
    DWORD handles = 0;
    if (::GetProcessHandleCount(self, &handles) != 0 && handles != 0) usage.handles = handles;
    return usage;
}

}  // namespace quillon::platform
