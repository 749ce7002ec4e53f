#include "platform/SystemVersionApi.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

SystemVersion ReportedSystemVersion() {
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (::GetVersionExA(&version) == 0) return {};
    return {version.dwMajorVersion, version.dwMinorVersion};
}

}  // namespace quillon::platform
