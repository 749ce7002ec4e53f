#include "platform/OutputCapture.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/CaptureState.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// A command that writes faster than it is read from has less to wait for.
constexpr int kPipeSize = 256 * 1024;

}  // namespace

OutputCapture::State* OutputCapture::State::Make() { return new State; }

bool OutputCapture::Open() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) return FailWithErrno();
    m_state->reader.Reset(ends[0]);
    m_state->writer.Reset(ends[1]);
    ::fcntl(ends[1], F_SETPIPE_SZ, kPipeSize);
    return ::fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0 || FailWithErrno();
}

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

}  // namespace quillon::platform
