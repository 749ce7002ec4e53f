#include "platform/OutputCapture.h"

#include <bit>
#include <string>

#include "base/HexDigits.h"
#include "platform/IdentifierApi.h"
#include "platform/win32/CaptureState.h"

namespace quillon::platform {

namespace {

/// A command that writes faster than it is read from has less to wait for.
constexpr DWORD kPipeSize = 256 * 1024;

/// Nobody can guess the name, and so nobody else connects to the pipe.
std::wstring NewPipeName() {
    GUID identifier{};
    if (!CreateIdentifier(identifier)) return {};
    std::wstring name = L"\\\\.\\pipe\\quillon-";
    for (const unsigned char byte : std::bit_cast<std::array<unsigned char, sizeof identifier>>(identifier)) {
        name += static_cast<wchar_t>(base::kLowerDigits[byte >> 4]);
        name += static_cast<wchar_t>(base::kLowerDigits[byte & 0xF]);
    }
    return name;
}

bool IsEnd(DWORD error) { return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF; }

std::nullopt_t Fail(PipeState& pipe, DWORD error) {
    pipe.hasEnded = true;
    ::SetLastError(error);
    return std::nullopt;
}

}  // namespace

void PipeState::BeginRead() {
    if (isReading || hasEnded || fault != ERROR_SUCCESS || !reader) return;
    read = {};
    read.hEvent = ready.Get();
    const BOOL isDone =
        ::ReadFile(reader.Get(), piece.data(), static_cast<DWORD>(piece.size()), nullptr, &read);
    const DWORD error = isDone != 0 ? DWORD{ERROR_IO_PENDING} : ::GetLastError();
    isReading = error == ERROR_IO_PENDING;
    hasEnded = IsEnd(error);
    if (isReading || hasEnded) return;
    fault = error;
    ::SetEvent(ready.Get());  // Read() tells it
}

void PipeState::CancelRead() {
    if (!isReading) return;
    DWORD count = 0;
    ::CancelIoEx(reader.Get(), &read);
    ::GetOverlappedResult(reader.Get(), &read, &count, TRUE);
    isReading = false;
}

OutputCapture::State* OutputCapture::State::Make() { return new PipeState; }

bool OutputCapture::Open() {
    PipeState& pipe = PipeOf(*m_state);
    pipe.ready.Reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const std::wstring name = NewPipeName();
    if (!pipe.ready || name.empty()) return false;
    pipe.reader.Reset(::CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeSize, kPipeSize,
        0, nullptr));
    if (!pipe.reader) return false;
    pipe.writer.Reset(::CreateFileW(name.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(pipe.writer);
}

std::optional<std::string_view> OutputCapture::Read() {
    PipeState& pipe = PipeOf(*m_state);
    pipe.BeginRead();
    if (pipe.fault != ERROR_SUCCESS && pipe.reader) return Fail(pipe, pipe.fault);
    if (!pipe.isReading) return std::string_view();
    DWORD count = 0;
    if (::GetOverlappedResult(pipe.reader.Get(), &pipe.read, &count, FALSE) != 0) {
        pipe.isReading = false;
        return std::string_view(pipe.piece.data(), count);
    }
    const DWORD error = ::GetLastError();
    if (error == ERROR_IO_INCOMPLETE) return std::string_view();
    pipe.isReading = false;
    if (!IsEnd(error)) return Fail(pipe, error);
    pipe.hasEnded = true;
    return std::string_view();
}

std::uint64_t OutputCapture::Available() const {
    PipeState& pipe = PipeOf(*m_state);
    if (!pipe.reader) return 0;
    DWORD read = 0;
    DWORD waiting = 0;
    if (pipe.isReading && ::GetOverlappedResult(pipe.reader.Get(), &pipe.read, &read, FALSE) == 0) read = 0;
    if (::PeekNamedPipe(pipe.reader.Get(), nullptr, 0, nullptr, &waiting, nullptr) == 0) waiting = 0;
    return std::uint64_t{read} + waiting;
}

}  // namespace quillon::platform
