#include "platform/SystemLogApi.h"

#include "base/Utf.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

bool SendToJournal(const std::string&, std::string_view) {
    ::SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return false;
}

bool ReportEntry(const std::string& source, EventKind kind, const std::string& text) {
    const HANDLE log = ::RegisterEventSourceW(nullptr, base::ToWide(source).c_str());
    if (log == nullptr) return false;
    const std::wstring wide = base::ToWide(text);
    const wchar_t* texts[] = {wide.c_str()};
    const WORD type = kind == EventKind::Error     ? EVENTLOG_ERROR_TYPE
                      : kind == EventKind::Warning ? EVENTLOG_WARNING_TYPE
                                                   : EVENTLOG_INFORMATION_TYPE;
    const BOOL reported = ::ReportEventW(log, type, 0, 0, nullptr, 1, 0, texts, nullptr);
    const DWORD code = ::GetLastError();
    ::DeregisterEventSource(log);
    ::SetLastError(code);
    return reported != 0;
}

}  // namespace quillon::platform
