#include "platform/ThreadApi.h"

#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

constexpr DWORD kNamingException = 0x406D1388;

/// Has the layout that debuggers look for in the exception.
#pragma pack(push, 8)
struct NamingRecord {
    DWORD type;
    LPCSTR name;
    DWORD threadId;
    DWORD flags;
};
#pragma pack(pop)

/// Debuggers are asked first; where none listens, the thread goes on as if nothing had been raised.
LONG CALLBACK IgnoreNaming(EXCEPTION_POINTERS* exception) {
    return exception->ExceptionRecord->ExceptionCode == kNamingException ? EXCEPTION_CONTINUE_EXECUTION
                                                                         : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void NameThread(const std::string& name) {
    constexpr DWORD kRecordType = 0x1000;
    constexpr std::size_t kLongestName = 127;
    const std::string shown = ("Vantora-" + name).substr(0, kLongestName);
    const NamingRecord record{kRecordType, shown.c_str(), ::GetCurrentThreadId(), 0};
    void* const handler = ::AddVectoredExceptionHandler(1, IgnoreNaming);
    if (handler == nullptr) return;
    ::RaiseException(kNamingException, 0, sizeof record / sizeof(ULONG_PTR),
                     reinterpret_cast<const ULONG_PTR*>(&record));
    ::RemoveVectoredExceptionHandler(handler);
}

std::uint32_t CurrentThreadId() { return ::GetCurrentThreadId(); }

}  // namespace quillon::platform
