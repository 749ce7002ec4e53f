#include "platform/StandardStreamApi.h"

#include <io.h>

#include <cstdint>
#include <new>
#include <string>

#include "platform/win32/LineEnds.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

/// Goes by the C runtime's descriptor, which a host may have led elsewhere.
HANDLE HandleOf(StandardStream stream) {
    const int descriptor = stream == StandardStream::Output ? 1 : 2;
    return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

bool IsOpen(HANDLE handle) {
    constexpr std::intptr_t kNoConsole = -2;  // what the runtime answers without any stream
    return handle != nullptr && handle != INVALID_HANDLE_VALUE &&
           handle != reinterpret_cast<HANDLE>(kNoConsole);
}

/// FILE_PIPE_LOCAL_INFORMATION, which the headers keep for drivers.
struct PipeInformation {
    ULONG type, configuration, maximumInstances, currentInstances, inboundQuota, readDataAvailable,
        outboundQuota, writeQuotaAvailable, state, end;
};

struct StatusBlock {
    void* status;
    ULONG_PTR information;
};

using QueryFile = LONG(NTAPI*)(HANDLE, StatusBlock*, void*, ULONG, int);

/// Returns whether nothing waits in a pipe for its reader: only then does the system let its mode be changed
/// to not wait. It is changed back at once, as it binds every process that shares the pipe.
bool IsEmpty(HANDLE pipe) {
    DWORD mode = 0;
    if (::GetNamedPipeHandleStateW(pipe, &mode, nullptr, nullptr, nullptr, nullptr, 0) == 0) return false;
    DWORD changed = mode | PIPE_NOWAIT;
    if (changed == mode || ::SetNamedPipeHandleState(pipe, &changed, nullptr, nullptr) == 0) return false;
    ::SetNamedPipeHandleState(pipe, &mode, nullptr, nullptr);
    return true;
}

/// Returns whether a pipe takes so many bytes without waiting, and when the system does not tell.
bool HasRoom(HANDLE pipe, std::size_t size) {
    constexpr int kPipeLocalInformation = 24;
    constexpr ULONG kClientEnd = 0;
    static const auto query = reinterpret_cast<QueryFile>(reinterpret_cast<void (*)()>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationFile")));
    PipeInformation information{};
    StatusBlock block{};
    if (query == nullptr || query(pipe, &block, &information, sizeof information, kPipeLocalInformation) < 0)
        return true;
    if (size <= information.writeQuotaAvailable) return true;
    // What a waiting reader asks for counts as if it were in the pipe, which is empty then.
    const ULONG quota = information.end == kClientEnd ? information.inboundQuota : information.outboundQuota;
    return size <= quota && IsEmpty(pipe);
}

}  // namespace

StreamUse UseOfStream(StandardStream stream) {
    const HANDLE handle = HandleOf(stream);
    if (!IsOpen(handle)) return StreamUse::Closed;
    const DWORD type = ::GetFileType(handle);
    DWORD mode = 0;
    if (type == FILE_TYPE_DISK) return StreamUse::Sink;
    return type == FILE_TYPE_CHAR && ::GetConsoleMode(handle, &mode) == 0 ? StreamUse::Sink
                                                                          : StreamUse::Reader;
}

std::size_t WriteToStream(StandardStream stream, StreamUse use, std::string_view text) noexcept try {
    const HANDLE handle = HandleOf(stream);
    if (use == StreamUse::Closed || !IsOpen(handle)) return 0;
    const std::string bytes = WithCrLf(text);
    const bool isPipe = use == StreamUse::Reader && ::GetFileType(handle) == FILE_TYPE_PIPE;
    if (isPipe && !HasRoom(handle, bytes.size())) return 0;
    DWORD count = 0;
    const BOOL written = ::WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    return written != 0 && count == bytes.size() ? text.size() : 0;
} catch (const std::bad_alloc&) {
    return 0;
}

bool TakesText(StandardStream stream) {
    constexpr std::size_t kShort = 1'000;
    const StreamUse use = UseOfStream(stream);
    const HANDLE handle = HandleOf(stream);
    return use == StreamUse::Sink ||
           (use == StreamUse::Reader && (::GetFileType(handle) != FILE_TYPE_PIPE || HasRoom(handle, kShort)));
}

}  // namespace quillon::platform
