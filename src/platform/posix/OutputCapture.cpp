#include "platform/OutputCapture.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/CaptureState.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// A command that writes faster than it is read from has less to wait for.
constexpr int kPipeSize = 256 * 1024;

}  // namespace

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
    if (!m_state->hasEnded) DrainInBackground(std::move(m_state->reader));
}

bool OutputCapture::Open() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) return FailWithErrno();
    m_state->reader.Reset(ends[0]);
    m_state->writer.Reset(ends[1]);
    ::fcntl(ends[1], F_SETPIPE_SZ, kPipeSize);
    return ::fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0 || FailWithErrno();
}

const FileHandle& OutputCapture::ChildEnd() const { return m_state->writer; }

void OutputCapture::CloseChildEnd() { m_state->writer.Reset(); }

std::optional<std::string_view> OutputCapture::Read() {
    if (!m_state->reader) return std::string_view();
    for (;;) {
        const ssize_t count = ::read(m_state->reader.Get(), m_state->piece.data(), m_state->piece.size());
        if (count > 0) return std::string_view(m_state->piece.data(), static_cast<std::size_t>(count));
        if (count == 0) m_state->hasEnded = true;
        if (count == 0 || errno == EAGAIN) return std::string_view();
        if (errno == EINTR) continue;
        FailWithErrno();
        return std::nullopt;
    }
}

std::uint64_t OutputCapture::Available() const {
    int count = 0;
    if (!m_state->reader || ::ioctl(m_state->reader.Get(), FIONREAD, &count) != 0) return 0;
    return static_cast<std::uint64_t>(count);
}

bool OutputCapture::HasEnded() const { return m_state->hasEnded || !m_state->reader; }

void OutputCapture::Refuse() {
    m_state->writer.Reset();
    m_state->reader.Reset();
}

}  // namespace quillon::platform
