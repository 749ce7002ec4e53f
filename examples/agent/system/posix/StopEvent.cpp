#include "system/posix/StopEvent.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace quillon::agent {

namespace {

constexpr useconds_t kPauseUs = 10'000;

}  // namespace

StopEvent::StopEvent() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void StopEvent::Set() {
    m_isSet = true;
    const std::uint64_t one = 1;
    static_cast<void>(!::write(m_event.Get(), &one, sizeof one));
}

bool StopEvent::AwaitInput(int descriptor) const {
    pollfd both[] = {{m_event.Get(), POLLIN, 0}, {descriptor, POLLIN, 0}};
    while (::poll(both, 2, -1) < 0) {
        if (m_isSet) return false;
        if (errno != EINTR) ::usleep(kPauseUs);
    }
    return both[0].revents == 0;
}

ssize_t StopEvent::Read(int descriptor, char* bytes, std::size_t size) const {
    ssize_t count = -1;
    do {
        if (!AwaitInput(descriptor)) return 0;
        count = ::read(descriptor, bytes, size);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    return count;
}

}  // namespace quillon::agent
