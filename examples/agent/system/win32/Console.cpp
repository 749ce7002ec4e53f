#include "system/Console.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdlib>
#include <memory>
#include <utility>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

InterruptHandler& Handler() {
    static constinit InterruptHandler handler = nullptr;
    return handler;
}

/// Never destroyed: the system's thread may run while the process ends.
std::function<void()>& Task() {
    static auto& task = *new std::function<void()>;
    return task;
}

/// Runs on a thread that the system makes for it.
BOOL WINAPI HandleControl(DWORD event) {
    if (event == CTRL_LOGOFF_EVENT) return TRUE;  // only services are told, of every account
    if (!Handler()()) return FALSE;               // the default handler ends the process
    if (Task()) Task()();
    // A closing console or shutdown ends the process when this returns:
    // leave main the seconds that the system grants.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
    return TRUE;
}

/// Results are UTF-8. The console outlives the agent and gets its code page back.
void SpeakUtf8() {
    static UINT previous = 0;
    previous = ::GetConsoleOutputCP();
    if (previous == 0 || !::SetConsoleOutputCP(CP_UTF8)) return;
    std::atexit([] { ::SetConsoleOutputCP(previous); });
}

}  // namespace

/// `argv` is in the ANSI code page, which cannot hold every argument.
std::vector<std::string> GetArguments(int, char**) {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> wide(
        ::CommandLineToArgvW(::GetCommandLineW(), &count), &::LocalFree);
    std::vector<std::string> arguments;
    if (wide == nullptr) return arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(StringUtils::WideStringToNarrow(wide.get()[i]));
    return arguments;
}

/// A service has descriptors without a handle. Its streams stay without a descriptor: what is written to
/// them is lost, as it is with the null device.
void SecureStandardStreams() {
    for (int descriptor = 0; descriptor <= kStandardError; ++descriptor) {
        if (::_get_osfhandle(descriptor) >= 0) continue;
        const int null = ::_open("NUL", _O_RDWR);
        if (null < 0 || null == descriptor) continue;
        ::_dup2(null, descriptor);
        ::_close(null);
    }
}

std::FILE* TakeStandardOutput() {
    const int taken = ::_dup(kStandardOutput);
    if (taken < 0) return nullptr;
    ::_setmode(taken, _O_BINARY);  // CSV ends its lines itself
    ::SetHandleInformation(reinterpret_cast<HANDLE>(::_get_osfhandle(taken)), HANDLE_FLAG_INHERIT, 0);
    std::FILE* stream = nullptr;
    if (::_dup2(kStandardError, kStandardOutput) == 0) stream = ::_fdopen(taken, "wb");
    if (stream == nullptr) ::_close(taken);
    SpeakUtf8();
    return stream;
}

std::size_t TerminalWidth(std::FILE* stream) {
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!::GetConsoleScreenBufferInfo(handle, &info)) return 0;
    const int width = info.srWindow.Right - info.srWindow.Left;  // the last column stays free, or lines wrap
    return width > 0 ? static_cast<std::size_t>(width) : 0;
}

bool IsErrorTerminal() { return ::_isatty(::_fileno(stderr)) != 0; }

void OnInterrupt(InterruptHandler handler) {
    Handler() = handler;
    ::SetConsoleCtrlHandler(&HandleControl, TRUE);
}

void AfterInterrupt(std::function<void()> task) { Task() = std::move(task); }

}  // namespace quillon::agent
