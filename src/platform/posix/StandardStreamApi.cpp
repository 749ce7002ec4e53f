#include "platform/StandardStreamApi.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <ctime>

#include "base/NeverDestroyed.h"
#include "platform/Handle.h"

namespace quillon::platform {

namespace {

int DescriptorOf(StandardStream stream) {
    return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

bool IsReady(int descriptor) {
    ::pollfd look{descriptor, POLLOUT, 0};
    return ::poll(&look, 1, 0) == 1 && look.revents == POLLOUT;
}

std::size_t CountOf(::ssize_t count) { return count > 0 ? static_cast<std::size_t>(count) : 0; }

/// Keeps SIGPIPE from the thread while it lives, and takes one away that came meanwhile. A thread that blocks
/// the signal itself keeps its own way: only there may one have waited before.
class NoPipeSignal {
public:
    NoPipeSignal() {
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_mask);
        m_wasBlocked = ::sigismember(&m_mask, SIGPIPE) == 1;
        if (m_wasBlocked) m_wasPending = IsPending();
    }
    ~NoPipeSignal() {
        if (m_hasBroken && !m_wasPending) TakeAway();
        if (!m_wasBlocked) ::pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

    /// Returns how much was written, as CountOf() does.
    std::size_t Write(int descriptor, std::string_view text) {
        const ::ssize_t count = ::write(descriptor, text.data(), text.size());
        m_hasBroken = count < 0 && errno == EPIPE;
        return CountOf(count);
    }

private:
    static bool IsPending() {
        ::sigset_t pending;
        ::sigpending(&pending);
        return ::sigismember(&pending, SIGPIPE) == 1;
    }
    void TakeAway() const {
        const ::timespec now{};
        while (::sigtimedwait(&m_signal, nullptr, &now) == -1 && errno == EINTR) {
        }
    }

    ::sigset_t m_signal, m_mask;
    bool m_wasBlocked = false, m_wasPending = false, m_hasBroken = false;
};

/// Returns the stream opened a second time, not to wait: the flag of the first would bind the processes that
/// share it. Invalid when that cannot be.
FileHandle SecondOpening(int descriptor) {
    const int twin = ::open(descriptor == STDOUT_FILENO ? "/proc/self/fd/1" : "/proc/self/fd/2",
                            O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (twin > STDERR_FILENO) return FileHandle(twin);
    if (twin >= 0) ::close(twin);
    return {};
}

/// Keeps the second opening of a stream for as long as the stream leads to the same.
class Twin {
public:
    /// Returns -1 when there is none.
    int Of(int descriptor, const struct ::stat& status) {
        if (m_twin && status.st_dev == m_device && status.st_ino == m_inode) return m_twin.Get();
        m_twin = SecondOpening(descriptor);
        m_device = status.st_dev;
        m_inode = status.st_ino;
        return m_twin ? m_twin.Get() : -1;
    }

private:
    FileHandle m_twin;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

struct Twins {
    Twin output, error;
};

/// No memory of the heap may be needed: a line is written by operations that do not throw.
Twin& TwinOf(StandardStream stream) {
    static base::NeverDestroyed<Twins> kept;
    Twins& twins = kept.Get();
    return stream == StandardStream::Output ? twins.output : twins.error;
}

std::size_t WriteToReader(StandardStream stream, std::string_view text) {
    const int descriptor = DescriptorOf(stream);
    struct ::stat status {};
    if (::fstat(descriptor, &status) != 0) return 0;
    if (S_ISSOCK(status.st_mode))
        return CountOf(::send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
    NoPipeSignal quiet;
    const int twin = TwinOf(stream).Of(descriptor, status);
    if (twin >= 0) return quiet.Write(twin, text);
    // A pipe that is ready takes this much at once.
    constexpr std::size_t kAtOnce = 4'096;
    if (!IsReady(descriptor)) return 0;
    return quiet.Write(descriptor, text.substr(0, kAtOnce));
}

}  // namespace

StreamUse UseOfStream(StandardStream stream) {
    const int descriptor = DescriptorOf(stream);
    struct ::stat status {};
    if (::fstat(descriptor, &status) != 0) return errno == EBADF ? StreamUse::Closed : StreamUse::Reader;
    if (S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3)) return StreamUse::Null;
    if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) return StreamUse::Sink;
    return S_ISCHR(status.st_mode) && ::isatty(descriptor) == 0 ? StreamUse::Sink : StreamUse::Reader;
}

std::size_t WriteToStream(StandardStream stream, StreamUse use, std::string_view text) noexcept {
    if (use == StreamUse::Closed) return 0;
    if (use == StreamUse::Null) return text.size();
    if (use == StreamUse::Reader) return WriteToReader(stream, text);
    return CountOf(::write(DescriptorOf(stream), text.data(), text.size()));
}

bool TakesText(StandardStream stream) {
    const StreamUse use = UseOfStream(stream);
    return use == StreamUse::Sink || use == StreamUse::Null ||
           (use == StreamUse::Reader && IsReady(DescriptorOf(stream)));
}

}  // namespace quillon::platform
