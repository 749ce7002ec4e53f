#include "platform/OutputCapture.h"

#include <bit>
#include <string>
#include <utility>

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

}  // namespace

void OutputCapture::State::BeginRead() {
    if (isReading || hasEnded || !reader) return;
    read = {};
    read.hEvent = ready.Get();
    const BOOL isDone =
        ::ReadFile(reader.Get(), piece.data(), static_cast<DWORD>(piece.size()), nullptr, &read);
    isReading = isDone != 0 || ::GetLastError() == ERROR_IO_PENDING;
    hasEnded = !isReading;
}

void OutputCapture::State::CancelRead() {
    if (!isReading) return;
    DWORD count = 0;
    ::CancelIoEx(reader.Get(), &read);
    ::GetOverlappedResult(reader.Get(), &read, &count, TRUE);
    isReading = false;
}

OutputCapture::OutputCapture() : m_state(new State) {}

OutputCapture::~OutputCapture() {
    m_state->writer.Reset();
    if (!m_state->reader) return;
    // Usually the last writer has gone with the command, and no thread is needed.
    constexpr int kMostPieces = 64;
    for (int i = 0; i < kMostPieces; ++i) {
        const std::optional<std::string_view> piece = Read();
        if (!piece || piece->empty()) break;
    }
    m_state->CancelRead();
    if (!m_state->hasEnded) DrainInBackground(std::move(m_state->reader));
}

bool OutputCapture::Open() {
    m_state->ready.Reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const std::wstring name = NewPipeName();
    if (!m_state->ready || name.empty()) return false;
    m_state->reader.Reset(::CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeSize, kPipeSize,
        0, nullptr));
    if (!m_state->reader) return false;
    m_state->writer.Reset(::CreateFileW(name.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(m_state->writer);
}

const FileHandle& OutputCapture::ChildEnd() const { return m_state->writer; }

void OutputCapture::CloseChildEnd() { m_state->writer.Reset(); }

std::optional<std::string_view> OutputCapture::Read() {
    m_state->BeginRead();
    if (!m_state->isReading) return std::string_view();
    DWORD count = 0;
    if (::GetOverlappedResult(m_state->reader.Get(), &m_state->read, &count, FALSE) != 0) {
        m_state->isReading = false;
        return std::string_view(m_state->piece.data(), count);
    }
    const DWORD error = ::GetLastError();
    if (error == ERROR_IO_INCOMPLETE) return std::string_view();
    m_state->isReading = false;
    m_state->hasEnded = true;
    if (error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF) return std::string_view();
    return std::nullopt;
}

std::uint64_t OutputCapture::Available() const {
    if (!m_state->reader) return 0;
    DWORD read = 0;
    DWORD waiting = 0;
    if (m_state->isReading && ::GetOverlappedResult(m_state->reader.Get(), &m_state->read, &read, FALSE) == 0)
        read = 0;
    if (::PeekNamedPipe(m_state->reader.Get(), nullptr, 0, nullptr, &waiting, nullptr) == 0) waiting = 0;
    return std::uint64_t{read} + waiting;
}

bool OutputCapture::HasEnded() const { return m_state->hasEnded || !m_state->reader; }

void OutputCapture::Refuse() {
    m_state->writer.Reset();
    m_state->CancelRead();
    m_state->reader.Reset();
}

}  // namespace quillon::platform
