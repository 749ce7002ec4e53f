#include "platform/StandardStreamApi.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

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

/// Keeps SIGPIPE from the thread while it lives, and takes one away that came meanwhile.
class NoPipeSignal {
public:
    NoPipeSignal() {
        ::sigset_t pending;
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGPIPE);
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_mask);
    }
    ~NoPipeSignal() {
        const ::timespec now{};
        while (!m_wasPending && ::sigtimedwait(&m_signal, nullptr, &now) == -1 && errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

private:
    ::sigset_t m_signal, m_mask;
    bool m_wasPending = false;
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

std::size_t CountOf(::ssize_t count) { return count > 0 ? static_cast<std::size_t>(count) : 0; }

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

/// Never destroyed: threads may log while the process ends.
Twin& TwinOf(StandardStream stream) {
    static Twin* const twins = new Twin[2];
    return twins[stream == StandardStream::Output ? 0 : 1];
}

std::size_t WriteToReader(StandardStream stream, std::string_view text) {
    const int descriptor = DescriptorOf(stream);
    struct ::stat status {};
    if (::fstat(descriptor, &status) != 0) return 0;
    if (S_ISSOCK(status.st_mode))
        return CountOf(::send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
    const NoPipeSignal quiet;
    const int twin = TwinOf(stream).Of(descriptor, status);
    if (twin >= 0) return CountOf(::write(twin, text.data(), text.size()));
    // A pipe that is ready takes this much at once.
    constexpr std::size_t kAtOnce = 4'096;
    if (!IsReady(descriptor)) return 0;
    return CountOf(::write(descriptor, text.data(), text.size() < kAtOnce ? text.size() : kAtOnce));
}

}  // namespace

StreamUse UseOfStream(StandardStream stream) {
    const int descriptor = DescriptorOf(stream);
    struct ::stat status {};
    if (::fstat(descriptor, &status) != 0) return errno == EBADF ? StreamUse::Closed : StreamUse::Reader;
    if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) return StreamUse::Sink;
    return S_ISCHR(status.st_mode) && ::isatty(descriptor) == 0 ? StreamUse::Sink : StreamUse::Reader;
}

std::size_t WriteToStream(StandardStream stream, StreamUse use, std::string_view text) {
    if (use == StreamUse::Closed) return 0;
    if (use == StreamUse::Reader) return WriteToReader(stream, text);
    return CountOf(::write(DescriptorOf(stream), text.data(), text.size()));
}

bool TakesText(StandardStream stream) {
    const StreamUse use = UseOfStream(stream);
    return use == StreamUse::Sink || (use == StreamUse::Reader && IsReady(DescriptorOf(stream)));
}

}  // namespace quillon::platform
