// Starts a program with the library that refuses its calls (Refusal.cpp), waits for it and ends with its
// code:
//   quillon_refuser PROGRAM [ARGUMENT...]
// The code is 100 when the program crashed, and 101 when it could not be started. While it runs, the launcher
// tells in the file REFUSE_FILE (Board.h) what it holds, and asks it to end, when told to; it ends with the
// launcher, however that ends.
#include <windows.h>

#include <winternl.h>

#include <bit>
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "torture/Board.h"

namespace {

using quillon::torture::Board;

constexpr int kCrashed = 100;
constexpr int kNotStarted = 101;
constexpr DWORD kPatienceMs = 20000;
constexpr DWORD kPauseMs = 20;
constexpr DWORD kFirstCrashCode = 0x80000000;

int Fail(const char* what) {
    std::fprintf(stderr, "quillon_refuser: %s: %lu\n", what, ::GetLastError());
    return kNotStarted;
}

/// The file is beside the launcher.
std::wstring RefusalPath() {
    wchar_t path[MAX_PATH];
    std::wstring text(path, ::GetModuleFileNameW(nullptr, path, MAX_PATH));
    return text.substr(0, text.find_last_of(L'\\') + 1) + L"quillon_refusal.dll";
}

/// What follows the launcher's own name, as it was written.
wchar_t* CommandLineBehind(wchar_t* line) {
    bool isQuoted = false;
    for (; *line != 0 && (isQuoted || *line != L' '); ++line)
        if (*line == L'"') isQuoted = !isQuoted;
    while (*line == L' ') ++line;
    return line;
}

bool Load(HANDLE process, const std::wstring& library) {
    const SIZE_T size = (library.size() + 1) * sizeof(wchar_t);
    void* const there = ::VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
    if (there == nullptr || !::WriteProcessMemory(process, there, library.c_str(), size, nullptr))
        return false;
    const HANDLE thread = ::CreateRemoteThread(
        process, nullptr, 0, std::bit_cast<LPTHREAD_START_ROUTINE>(&::LoadLibraryW), there, 0, nullptr);
    DWORD module = 0;
    const bool isLoaded = thread != nullptr && ::WaitForSingleObject(thread, kPatienceMs) == WAIT_OBJECT_0 &&
                          ::GetExitCodeThread(thread, &module) && module != 0;
    ::CloseHandle(thread);
    return isLoaded;
}

Board* MapBoard() {
    const wchar_t* const path = ::_wgetenv(L"REFUSE_FILE");
    if (path == nullptr) return nullptr;
    const HANDLE file = ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE mapping = ::CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, sizeof(Board), nullptr);
    return static_cast<Board*>(::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Board)));
}

/// Wine tells the size of the table of handles: which of them are open shows when they are copied.
std::uint64_t CountHandles(HANDLE process, ULONG tableSize) {
    std::uint64_t count = 0;
    for (ULONG_PTR value = 1; value <= ULONG_PTR{tableSize} * 4; ++value) {
        HANDLE copy = nullptr;
        if (!::DuplicateHandle(process, reinterpret_cast<HANDLE>(value * 4), ::GetCurrentProcess(), &copy, 0,
                               FALSE, DUPLICATE_SAME_ACCESS))
            continue;
        ::CloseHandle(copy);
        ++count;
    }
    return count;
}

void Count(const PROCESS_INFORMATION& process, Board& board) {
    static std::vector<char> list(1 << 20);
    ULONG size = 0;
    if (::NtQuerySystemInformation(SystemProcessInformation, list.data(), static_cast<ULONG>(list.size()),
                                   &size) < 0)
        return;
    const char* place = list.data();
    for (;;) {
        const auto& entry = *reinterpret_cast<const SYSTEM_PROCESS_INFORMATION*>(place);
        if (reinterpret_cast<ULONG_PTR>(entry.UniqueProcessId) == process.dwProcessId) {
            board.threads = entry.NumberOfThreads;
            board.handles = CountHandles(process.hProcess, entry.HandleCount);
        }
        if (entry.NextEntryOffset == 0) return;
        place += entry.NextEntryOffset;
    }
}

void Answer(const PROCESS_INFORMATION& process, Board& board) {
    const std::uint64_t asked = board.asked;
    if (asked == board.answered) return;
    Count(process, board);
    board.answered = asked;
}

/// Runs the handlers of a console's events, as the system does it. Wine sends no events, but has the routine.
void AskToEnd(const PROCESS_INFORMATION& process, Board& board) {
    if (board.ends.exchange(0) == 0) return;
    const FARPROC routine = ::GetProcAddress(::GetModuleHandleW(L"kernelbase"), "CtrlRoutine");
    if (routine == nullptr) return;
    const HANDLE thread =
        ::CreateRemoteThread(process.hProcess, nullptr, 0, std::bit_cast<LPTHREAD_START_ROUTINE>(routine),
                             std::bit_cast<void*>(ULONG_PTR{CTRL_BREAK_EVENT}), 0, nullptr);
    if (thread != nullptr) ::CloseHandle(thread);
}

DWORD Await(const PROCESS_INFORMATION& process) {
    Board* const board = MapBoard();
    while (::WaitForSingleObject(process.hProcess, kPauseMs) == WAIT_TIMEOUT)
        if (board != nullptr) {
            Answer(process, *board);
            AskToEnd(process, *board);
        }
    DWORD code = kNotStarted;
    ::GetExitCodeProcess(process.hProcess, &code);
    return code;
}

void EndWithUs(HANDLE process) {
    const HANDLE job = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
    ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    ::AssignProcessToJobObject(job, process);
}

}  // namespace

int main() {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, CommandLineBehind(::GetCommandLineW()), nullptr, nullptr, TRUE,
                          CREATE_SUSPENDED, nullptr, nullptr, &start, &process))
        return Fail("the program cannot be started");
    EndWithUs(process.hProcess);
    if (!Load(process.hProcess, RefusalPath())) {
        ::TerminateProcess(process.hProcess, kNotStarted);
        return Fail("the library cannot be loaded");
    }
    // The program's own are the only ends of its pipes.
    for (const HANDLE handle : {start.hStdInput, start.hStdOutput}) ::CloseHandle(handle);
    ::ResumeThread(process.hThread);
    const DWORD code = Await(process);
    if (code < kFirstCrashCode) return static_cast<int>(code);
    std::fprintf(stderr, "quillon_refuser: the program has ended with %08lX\n", code);
    return kCrashed;
}
