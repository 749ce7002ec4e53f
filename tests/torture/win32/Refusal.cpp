// Refuses calls of the system and of the C library on Windows: a library that the launcher (Launcher.cpp) has
// a process load before its main(), and which puts its own functions into the import tables of the agent, of
// the library and of the run-time libraries. The file REFUSE_FILE holds the orders and the counts (Board.h).
// Calls are counted from the beginning of main(), which asks for the command line first. Children of the
// process are spared. It links the run-time libraries statically and asks for no memory.
#include <windows.h>
#include <winsock2.h>

#include <oleauto.h>
#include <process.h>
#include <ws2tcpip.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "torture/ArmedProcess.h"

namespace {

using namespace quillon::torture;

/// Names the callers, each with its module, as addresses that addr2line takes.
void ShowPlace() {
    void* frames[48];
    const USHORT count = ::RtlCaptureStackBackTrace(2, 48, frames, nullptr);
    for (USHORT i = 0; i < count; ++i) {
        HMODULE module = nullptr;
        wchar_t path[MAX_PATH] = L"?";
        ::GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(frames[i]), &module);
        ::GetModuleFileNameW(module, path, MAX_PATH);
        char line[MAX_PATH + 64];
        const int length = std::snprintf(line, sizeof line, "  at %ls %p\n", path, frames[i]);
        DWORD written = 0;
        ::WriteFile(::GetStdHandle(STD_ERROR_HANDLE), line, static_cast<DWORD>(length), &written, nullptr);
    }
}

/// Where the module of an address begins. The loader, whose lock the caller may wait for, is not asked.
std::uintptr_t BaseOf(void* address) {
    MEMORY_BASIC_INFORMATION region{};
    ::VirtualQuery(address, &region, sizeof region);
    return region.Type == MEM_IMAGE ? reinterpret_cast<std::uintptr_t>(region.AllocationBase) : 0;
}

[[gnu::noinline]] std::uint64_t Place() {
    void* frames[62];
    return PlaceOf(frames, ::RtlCaptureStackBackTrace(1, 62, frames, nullptr), &BaseOf);
}

/// Counts a call and says whether it fails; the error of the system or of the C library is then set.
bool Refuse(Kind kind, DWORD error) {
    const Answer answer = CountArmed(kind, &Place);
    if (answer == Answer::Pass) return false;
    if (answer == Answer::RefuseAndShow) ShowPlace();
    errno = kind == Thread ? EAGAIN : ENOMEM;
    ::SetLastError(error);
    return true;
}

// --- Functions of one shape: with these arguments, failed in one way ---

template <Kind kind, DWORD error, auto failed, auto next, class Result, class... Arguments>
Result Refusing(Arguments... arguments) {
    return Refuse(kind, error) ? (Result)failed : next()(arguments...);
}

template <Kind kind, DWORD error, auto failed, auto next, class Result, class... Arguments>
void* Pointer(Result (*)(Arguments...)) {
    return reinterpret_cast<void*>(&Refusing<kind, error, failed, next, Result, Arguments...>);
}

struct Hook {
    const char* name;
    void* function;
};

// --- Memory ---

void* Live(void* memory) {
    if (memory != nullptr) board->live.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* Allocate(std::size_t size) {
    return Refuse(Memory, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : Live(std::malloc(size));
}
void* AllocateMany(std::size_t count, std::size_t size) {
    return Refuse(Memory, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : Live(std::calloc(count, size));
}
void* Reallocate(void* memory, std::size_t size) {
    if (Refuse(Memory, ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
    void* const moved = std::realloc(memory, size);
    return memory == nullptr ? Live(moved) : moved;
}
void Free(void* memory) {
    if (memory != nullptr) board->live.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}

// --- Files ---

/// What cannot be said is not refused: whoever drives the process needs the reason.
BOOL WINAPI Put(HANDLE file, LPCVOID from, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) {
    if (file != ::GetStdHandle(STD_ERROR_HANDLE) && Refuse(Write, ERROR_DISK_FULL)) return FALSE;
    return ::WriteFile(file, from, size, count, overlapped);
}

BOOL WINAPI SetFileFacts(HANDLE file, FILE_INFO_BY_HANDLE_CLASS facts, LPVOID from, DWORD size) {
    const bool isSize = facts == FileEndOfFileInfo || facts == FileAllocationInfo;
    const bool isRefused = isSize ? Refuse(Write, ERROR_DISK_FULL) : Refuse(Rename, ERROR_ACCESS_DENIED);
    return isRefused ? FALSE : ::SetFileInformationByHandle(file, facts, from, size);
}

// --- Look-ups: what they answer without the system ---

INT RefuseLookup() {
    if (Refuse(LookupLater, WSATRY_AGAIN)) return WSATRY_AGAIN;
    if (Refuse(LookupMemory, WSA_NOT_ENOUGH_MEMORY)) return WSA_NOT_ENOUGH_MEMORY;
    return Refuse(LookupSystem, WSANO_RECOVERY) ? WSANO_RECOVERY : 0;
}

INT WSAAPI LookUp(PCWSTR node, PCWSTR service, const ADDRINFOW* hints, PADDRINFOW* list) {
    const INT code = RefuseLookup();
    return code != 0 ? code : ::GetAddrInfoW(node, service, hints, list);
}

INT WSAAPI LookUpName(const SOCKADDR* address, socklen_t size, PWCHAR host, DWORD hostSize, PWCHAR service,
                      DWORD serviceSize, INT flags) {
    const INT code = RefuseLookup();
    return code != 0 ? code : ::GetNameInfoW(address, size, host, hostSize, service, serviceSize, flags);
}

// --- The clock of the day, which cannot fail: it stands at its beginning ---

void WINAPI Now(LPFILETIME now) {
    *now = {};
    if (Refuse(Clock, ERROR_SUCCESS)) return;
    ::GetSystemTimeAsFileTime(now);
    const ULONGLONG ticks = (ULONGLONG{now->dwHighDateTime} << 32 | now->dwLowDateTime) +
                            static_cast<ULONGLONG>(board->ahead * 10'000'000);
    *now = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// --- Beginning and end ---

/// The library's own command line is asked for while it is loaded, the agent's by main().
LPWSTR WINAPI BeginMain() {
    isArmed = true;
    return ::GetCommandLineW();
}

/// The C library would end with the code 3, which a call that fails has as well.
[[noreturn]] void Crash() {
    isArmed = false;
    if (board->showsPlace != 0) ShowPlace();
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(STATUS_STACK_BUFFER_OVERRUN));
    std::abort();
}

#define OWN(name, function) \
    { name, reinterpret_cast<void*>(&function) }
#define HOOK(kind, error, failed, name)                                        \
    {                                                                          \
#name, Pointer < kind, error, failed, [] { return &::name; }>(&::name) \
    }

const Hook kHooks[] = {
    OWN("GetCommandLineW", BeginMain),
    OWN("abort", Crash),
    OWN("malloc", Allocate),
    OWN("calloc", AllocateMany),
    OWN("realloc", Reallocate),
    OWN("free", Free),
    HOOK(Memory, ERROR_NOT_ENOUGH_MEMORY, 0, SysAllocString),
    HOOK(Memory, ERROR_NOT_ENOUGH_MEMORY, 0, SysAllocStringLen),
    HOOK(Memory, ERROR_NOT_ENOUGH_MEMORY, 0, SafeArrayCreateVector),
    HOOK(Memory, ERROR_NOT_ENOUGH_MEMORY, E_OUTOFMEMORY, VariantCopy),
    HOOK(Open, ERROR_TOO_MANY_OPEN_FILES, -1LL, CreateFileW),
    HOOK(Open, ERROR_TOO_MANY_OPEN_FILES, -1LL, CreateFileA),
    HOOK(Open, ERROR_TOO_MANY_OPEN_FILES, -1LL, CreateNamedPipeW),
    HOOK(Open, ERROR_TOO_MANY_OPEN_FILES, -1LL, FindFirstFileW),
    HOOK(Open, ERROR_TOO_MANY_OPEN_FILES, -1LL, FindFirstFileExW),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, CreateEventW),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, CreateJobObjectW),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, CreateMutexW),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, CreateFileMappingW),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, MapViewOfFile),
    HOOK(Open, ERROR_NO_SYSTEM_RESOURCES, 0, DuplicateHandle),
    HOOK(Read, ERROR_CRC, 0, ReadFile),
    HOOK(Read, ERROR_CRC, 0, ReadFileEx),
    HOOK(Read, ERROR_CRC, 0, FindNextFileW),
    HOOK(Read, ERROR_CRC, 0, GetFileInformationByHandle),
    HOOK(Read, ERROR_CRC, 0, GetFileInformationByHandleEx),
    HOOK(Read, ERROR_CRC, 0, GetFileSizeEx),
    OWN("WriteFile", Put),
    HOOK(Write, ERROR_DISK_FULL, 0, SetEndOfFile),
    OWN("SetFileInformationByHandle", SetFileFacts),
    HOOK(Rename, ERROR_ACCESS_DENIED, 0, MoveFileExW),
    HOOK(Rename, ERROR_ACCESS_DENIED, 0, DeleteFileW),
    HOOK(Rename, ERROR_ACCESS_DENIED, 0, RemoveDirectoryW),
    HOOK(Sync, ERROR_IO_DEVICE, 0, FlushFileBuffers),
    HOOK(Folder, ERROR_ACCESS_DENIED, 0, CreateDirectoryW),
    HOOK(Spawn, ERROR_COMMITMENT_LIMIT, 0, CreateProcessW),
    HOOK(Spawn, ERROR_COMMITMENT_LIMIT, 0, AssignProcessToJobObject),
    HOOK(Spawn, ERROR_COMMITMENT_LIMIT, 0, SetInformationJobObject),
    HOOK(Thread, ERROR_NOT_ENOUGH_MEMORY, 0, _beginthreadex),
    HOOK(Thread, ERROR_NOT_ENOUGH_MEMORY, 0, TrySubmitThreadpoolCallback),
    HOOK(Thread, ERROR_NOT_ENOUGH_MEMORY, 0, RegisterWaitForSingleObject),
    HOOK(Socket, WSASYSNOTREADY, WSASYSNOTREADY, WSAStartup),
    HOOK(Socket, WSAEMFILE, -1LL, WSASocketW),
    OWN("GetAddrInfoW", LookUp),
    OWN("GetNameInfoW", LookUpName),
    HOOK(Socket, WSAENETDOWN, -1, WSAStringToAddressW),
    HOOK(Socket, WSAENETDOWN, -1, WSAAddressToStringW),
    OWN("GetSystemTimeAsFileTime", Now),
};

/// The run-time libraries of threads and of exceptions end the process themselves when they have no memory or
/// no handle for a thread's variables: of their calls only these are replaced.
constexpr const char* kRunTimeNames[] = {"abort", "_beginthreadex", "GetSystemTimeAsFileTime"};

bool IsReplacedAtRunTime(const char* name) {
    for (const char* const replaced : kRunTimeNames)
        if (std::strcmp(replaced, name) == 0) return true;
    return false;
}

void* ReplacementOf(const char* name) {
    for (const Hook& hook : kHooks)
        if (std::strcmp(hook.name, name) == 0) return hook.function;
    return nullptr;
}

void Replace(void** entry, void* function) {
    DWORD before = 0;
    if (!::VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &before)) return;
    *entry = function;
    ::VirtualProtect(entry, sizeof *entry, before, &before);
}

template <class Type>
Type* At(HMODULE module, std::uintptr_t offset) {
    return reinterpret_cast<Type*>(reinterpret_cast<std::uintptr_t>(module) + offset);
}

/// Puts our functions into the import table of a module.
void Patch(HMODULE module, bool isRunTime) {
    const auto* const headers =
        At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (imports == 0) return;
    for (const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports); library->FirstThunk != 0;
         ++library) {
        auto* entry = At<void*>(module, library->FirstThunk);
        for (const auto* name = At<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
             name->u1.AddressOfData != 0; ++name, ++entry) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const char* const text = At<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name;
            if (isRunTime && !IsReplacedAtRunTime(text)) continue;
            if (void* const function = ReplacementOf(text)) Replace(entry, function);
        }
    }
}

void MapBoard() {
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetEnvironmentVariableW(L"REFUSE_FILE", path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return;
    const HANDLE file = ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE mapping = ::CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, sizeof(Board), nullptr);
    void* const mapped = ::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Board));
    ::CloseHandle(mapping);
    ::CloseHandle(file);
    if (mapped != nullptr) board = static_cast<Board*>(mapped);
    ::SetEnvironmentVariableW(L"REFUSE_FILE", nullptr);
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    MapBoard();
    Patch(::GetModuleHandleW(nullptr), false);
    for (const wchar_t* name : {L"quillon.dll", L"libstdc++-6.dll", L"msvcrt.dll"})
        if (const HMODULE module = ::GetModuleHandleW(name)) Patch(module, false);
    for (const wchar_t* name : {L"libgcc_s_seh-1.dll", L"libwinpthread-1.dll"})
        if (const HMODULE module = ::GetModuleHandleW(name)) Patch(module, true);
    return TRUE;
}
