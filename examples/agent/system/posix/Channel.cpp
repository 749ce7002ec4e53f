#include "system/Channel.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "system/PrivateFile.h"

namespace quillon::agent {

namespace {

constexpr int kPatienceMs = 5000;
constexpr int kBacklog = 64;

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0) ::close(m_number);
    }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int Get() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }

private:
    int m_number;
};

/// Ends waits for a descriptor, once and for all.
class StopEvent {
public:
    void Set() {
        const std::uint64_t one = 1;
        static_cast<void>(!::write(m_event.Get(), &one, sizeof one));
    }

    /// Waits until the descriptor can be read; false when the event is set.
    bool AwaitInput(int descriptor) const {
        pollfd both[] = {{m_event.Get(), POLLIN, 0}, {descriptor, POLLIN, 0}};
        while (::poll(both, 2, -1) < 0) {
            if (errno != EINTR) return false;
        }
        return both[0].revents == 0;
    }

private:
    Descriptor m_event{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

/// Returns the bytes that came, 0 at the end or when it is stopped, and -1 on failure.
ssize_t ReadFrom(int descriptor, const StopEvent& stop, char* bytes, std::size_t size) {
    ssize_t count = -1;
    do {
        if (!stop.AwaitInput(descriptor)) return 0;
        count = ::read(descriptor, bytes, size);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    return count;
}

std::size_t CountOf(ssize_t read) { return read < 0 ? 0 : static_cast<std::size_t>(read); }

class SocketChannel final : public Channel {
public:
    explicit SocketChannel(Descriptor socket) : m_socket(std::move(socket)) {}

    std::size_t Read(char* bytes, std::size_t size) override {
        return CountOf(ReadFrom(m_socket.Get(), m_stop, bytes, size));
    }

    bool Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t sent =
                ::send(m_socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            } else if (errno != EINTR && !(errno == EAGAIN && AwaitRoom())) {
                return false;
            }
        }
        return true;
    }

    bool IsGone() override {
        pollfd end = {m_socket.Get(), 0, 0};  // of both directions, which needs no request
        return ::poll(&end, 1, 0) == 1;
    }

    void Stop() override { m_stop.Set(); }

private:
    bool AwaitRoom() const {
        pollfd room = {m_socket.Get(), POLLOUT, 0};
        return ::poll(&room, 1, kPatienceMs) == 1;
    }

    Descriptor m_socket;
    StopEvent m_stop;
};

bool IsOwnAccount(int socket) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
    return peer.uid == 0 || peer.uid == ::geteuid();
}

/// Which file it is that a path leads to, itself if it is a link.
struct FileIdentity {
    explicit FileIdentity(const std::string& path) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) return;
        device = status.st_dev;
        number = status.st_ino;
    }
    bool operator==(const FileIdentity&) const = default;

    dev_t device = 0;
    ino_t number = 0;
};

class SocketListener final : public Listener {
public:
    SocketListener(Descriptor socket, std::string path)
        : m_socket(std::move(socket)), m_path(std::move(path)), m_identity(m_path) {}
    ~SocketListener() override {  // another agent's socket may have taken the place
        if (m_identity == FileIdentity(m_path)) ::unlink(m_path.c_str());
    }

    std::unique_ptr<Channel> Accept() override {
        while (m_stop.AwaitInput(m_socket.Get())) {
            Descriptor client(::accept4(m_socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!client) {
                Wait(errno);
            } else if (IsOwnAccount(client.Get())) {
                return std::make_unique<SocketChannel>(std::move(client));
            } else {
                ServiceLocator::Get<ICLogger>()->Warn("A client of another account was refused");
            }
        }
        return nullptr;
    }

    void Stop() override { m_stop.Set(); }

private:
    /// Lets some time go when no descriptor is free, so that the waiting client costs no processor time.
    void Wait(int error) const {
        if (error != EMFILE && error != ENFILE && error != ENOMEM && error != ENOBUFS) return;
        ServiceLocator::Get<ICLogger>()->Warn("A client waits: %s", SystemErrorText(error).c_str());
        ::usleep(100'000);
    }

    Descriptor m_socket;
    std::string m_path;
    FileIdentity m_identity;
    StopEvent m_stop;
};

/// A socket that nobody listens at is left of an agent that was killed.
void RemoveLeftover(const sockaddr_un& address) {
    struct stat status {};
    if (::lstat(address.sun_path, &status) != 0 || !S_ISSOCK(status.st_mode)) return;
    // A listener that hangs has a queue that is full, in which another client would wait without end.
    const Descriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool isHeld =
        ::connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (!isHeld && errno == ECONNREFUSED) ::unlink(address.sun_path);
}

/// Nobody but the owner may connect, from the socket's first moment on.
int BindPrivately(int socket, const sockaddr_un& address) {
    const mode_t mask = ::umask(S_IRWXG | S_IRWXO | S_IXUSR);
    const int code =
        ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
    ::umask(mask);
    return code;
}

}  // namespace

std::unique_ptr<Listener> Listen(const std::string& address, std::string& fault) {
    const std::string path = PathUtils::ToSystemPath(address);
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof name.sun_path) {
        fault = "its path must have 1 to " + std::to_string(sizeof name.sun_path - 1) + " bytes";
        return nullptr;
    }
    std::memcpy(name.sun_path, path.data(), path.size());
    RemoveLeftover(name);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int code = socket ? BindPrivately(socket.Get(), name) : errno;
    if (code == 0 && ::listen(socket.Get(), kBacklog) != 0) code = errno;
    fault = code == 0 ? "" : SystemErrorText(code);
    return code == 0 ? std::make_unique<SocketListener>(std::move(socket), path) : nullptr;
}

struct StandardInput::State {
    StopEvent stop;
};

StandardInput::StandardInput() : m_state(std::make_unique<State>()) {}
StandardInput::~StandardInput() = default;

std::size_t StandardInput::Read(char* bytes, std::size_t size) {
    const ssize_t count = ReadFrom(STDIN_FILENO, m_state->stop, bytes, size);
    if (count < 0)
        ServiceLocator::Get<ICLogger>()->Error("Standard input cannot be read: %s",
                                               SystemErrorText(errno).c_str());
    return CountOf(count);
}

void StandardInput::Stop() { m_state->stop.Set(); }

}  // namespace quillon::agent
