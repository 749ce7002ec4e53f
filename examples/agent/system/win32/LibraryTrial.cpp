#include "system/win32/LibraryTrial.h"

#include <windows.h>

#include "quillon/CommandLineBuilder.h"
#include "quillon/StringUtils.h"
#include "system/SharedLibrary.h"
#include "system/win32/Handle.h"
#include "system/win32/LastErrorText.h"

namespace quillon::agent {

namespace {

constexpr const char* kSubCommand = "try-library";
constexpr DWORD kLongest = 30'000;  // milliseconds
/// The exit code of a trial that came to its end: these bits, which no code of the system has, and the error
/// of the attempt.
constexpr DWORD kTried = 0x20510000;
constexpr DWORD kErrorBits = 0xFFFF;
constexpr DWORD kThrew = kTried | kErrorBits;  // no error has such a number

std::wstring OwnPath() {
    constexpr std::size_t kLongestPath = 32'768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

/// Makes the job whose processes end when its handle is closed.
Handle MakeJob() {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job) ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

/// Starts the trial without a console and without our handles; null on failure.
Handle Start(const std::wstring& path, HANDLE job) {
    const std::wstring program = OwnPath();
    CommandLineBuilder command(StringUtils::WideStringToNarrow(program));
    command.Add(kSubCommand).Add(StringUtils::WideStringToNarrow(path));
    std::wstring line = StringUtils::NarrowStringToWide(command.Get());
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION made = {};
    if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE,
                          CREATE_SUSPENDED | CREATE_NO_WINDOW, nullptr, nullptr, &start, &made))
        return nullptr;
    const Handle thread(made.hThread);
    if (job != nullptr) ::AssignProcessToJobObject(job, made.hProcess);
    ::ResumeThread(thread.get());
    return Handle(made.hProcess);
}

std::string FaultOf(DWORD code) {
    if ((code & ~kErrorBits) != kTried)
        return "loading it ends the process with the code " + std::to_string(code);
    if (code == kThrew) return "a constructor of it threw";
    return code == kTried ? "" : SystemErrorText(static_cast<int>(code & kErrorBits));
}

}  // namespace

void* LoadNow(const std::wstring& path) {
    return reinterpret_cast<void*>(::LoadLibraryExW(path.c_str(), nullptr,
                                                    LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR |
                                                        LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                                                        LOAD_LIBRARY_SEARCH_SYSTEM32));
}

std::string TryInProcess(const std::wstring& path) {
    const Handle job = MakeJob();
    const Handle process = Start(path, job.get());
    if (!process) return "it cannot be tried: " + LastErrorText();
    if (::WaitForSingleObject(process.get(), kLongest) != WAIT_OBJECT_0) {
        ::TerminateProcess(process.get(), ERROR_TIMEOUT);
        return "loading it takes more than " + std::to_string(kLongest / 1000) + " seconds";
    }
    DWORD code = 0;
    if (!::GetExitCodeProcess(process.get(), &code)) return "it cannot be tried: " + LastErrorText();
    return FaultOf(code);
}

/// Nothing of the library runs at the end: neither its destructors nor those of its threads.
void TryLibraryIfAsked(const std::vector<std::string>& arguments) {
    if (arguments.size() != 2 || arguments[0] != kSubCommand) return;
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    const bool isLoaded = LoadNow(StringUtils::NarrowStringToWide(arguments[1])) != nullptr;
    const DWORD error = isLoaded ? ERROR_SUCCESS : ::GetLastError();
    // An exception leaves its own code, a larger one, where the system does not replace it.
    ::TerminateProcess(::GetCurrentProcess(), error < kErrorBits ? kTried | error : kThrew);
}

}  // namespace quillon::agent
