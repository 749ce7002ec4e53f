#include "system/Service.h"

#include <windows.h>

#include <atomic>
#include <memory>
#include <stdexcept>

#include "quillon/CommandLineBuilder.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr const wchar_t* kName = L"QuillonAgent";
constexpr const wchar_t* kDisplayName = L"Quillon Agent";
constexpr DWORD kPatience = 15'000;  // milliseconds until the next report

[[noreturn]] void ThrowLastError(const std::string& what) {
    const int code = static_cast<int>(::GetLastError());
    throw std::runtime_error(what + ": " + StringUtils::GetErrorAsString(code));
}

struct Closer {
    using pointer = SC_HANDLE;
    void operator()(SC_HANDLE handle) const { ::CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<SC_HANDLE, Closer>;

ServiceHandle OpenManager(DWORD rights) {
    ServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, rights));
    if (!manager) ThrowLastError("Cannot open the service control manager");
    return manager;
}

std::string OwnPath() {
    std::wstring path(32'768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return StringUtils::WideStringToNarrow(path);
}

/// The one service of the process; the system gives its functions no argument of ours.
struct Service {
    std::function<int()> body;
    std::function<void()> stop;
    std::atomic<SERVICE_STATUS_HANDLE> handle = nullptr;
    int code = 0;
};

Service& TheService() {
    static Service& service = *new Service;  // the handler's thread may outlive main()
    return service;
}

void Report(DWORD state, DWORD code = 0) {
    const SERVICE_STATUS_HANDLE handle = TheService().handle;
    if (handle == nullptr) return;
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
    status.dwWin32ExitCode = code == 0 ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
    status.dwServiceSpecificExitCode = code;
    status.dwWaitHint = state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING ? kPatience : 0;
    ::SetServiceStatus(handle, &status);
}

DWORD WINAPI HandleControl(DWORD control, DWORD, void*, void*) {
    if (control == SERVICE_CONTROL_INTERROGATE) return NO_ERROR;
    if (control != SERVICE_CONTROL_STOP && control != SERVICE_CONTROL_SHUTDOWN)
        return ERROR_CALL_NOT_IMPLEMENTED;
    Report(SERVICE_STOP_PENDING);
    TheService().stop();
    return NO_ERROR;
}

void WINAPI RunBody(DWORD, wchar_t**) {
    Service& service = TheService();
    service.handle = ::RegisterServiceCtrlHandlerExW(kName, &HandleControl, nullptr);
    Report(SERVICE_START_PENDING);
    service.code = service.body();
    Report(SERVICE_STOPPED, static_cast<DWORD>(service.code));
}

}  // namespace

void TellReady() { Report(SERVICE_RUNNING); }
void TellStopping() { Report(SERVICE_STOP_PENDING); }

void InstallService(const std::vector<std::string>& options) {
    CommandLineBuilder command(OwnPath());
    command.Add("service").Add("run");
    for (const std::string& option : options) command.Add(option);
    const ServiceHandle manager = OpenManager(SC_MANAGER_CREATE_SERVICE);
    const ServiceHandle service(::CreateServiceW(
        manager.get(), kName, kDisplayName, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
        SERVICE_ERROR_NORMAL, StringUtils::NarrowStringToWide(command.Get()).c_str(), nullptr, nullptr,
        nullptr, nullptr, nullptr));
    if (!service) ThrowLastError("Cannot install the service");
}

void RemoveService() {
    const ServiceHandle manager = OpenManager(SC_MANAGER_CONNECT);
    const ServiceHandle service(::OpenServiceW(manager.get(), kName, SERVICE_STOP | DELETE));
    if (!service) ThrowLastError("There is no service to remove");
    SERVICE_STATUS status = {};
    ::ControlService(service.get(), SERVICE_CONTROL_STOP, &status);  // fails unless it runs
    if (!::DeleteService(service.get())) ThrowLastError("Cannot remove the service");
}

int RunAsService(const std::function<int()>& body, const std::function<void()>& stop) {
    TheService().body = body;
    TheService().stop = stop;
    std::wstring name = kName;
    const SERVICE_TABLE_ENTRYW table[] = {{name.data(), &RunBody}, {nullptr, nullptr}};
    if (!::StartServiceCtrlDispatcherW(table))
        ThrowLastError("Only the service control manager starts the service");
    return TheService().code;
}

}  // namespace quillon::agent
