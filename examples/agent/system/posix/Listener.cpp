#include "system/Listener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "system/SystemErrorText.h"
#include "system/posix/Descriptor.h"
#include "system/posix/FileIdentity.h"
#include "system/posix/StopEvent.h"

namespace quillon::agent {

namespace {

constexpr int kPatienceMs = 5000;
constexpr int kBacklog = 64;

bool IsOwnAccount(int socket) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
    return peer.uid == 0 || peer.uid == ::geteuid();
}

void WarnUnlessGone(const char* what) {
    if (errno == EPIPE || errno == ECONNRESET) return;
    ServiceLocator::Get<ICLogger>()->Warn("%s: %s", what, ReasonOf(errno).c_str());
}

class SocketChannel final : public Channel {
public:
    /// Takes a client, unless it lacks what it needs to serve one: then the client waits. False with errno.
    bool Accept(int listener) {
        if (!m_stop.IsMade()) return false;
        m_socket = Descriptor(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
        return static_cast<bool>(m_socket);
    }

    bool IsOfOwnAccount() const { return IsOwnAccount(m_socket.Get()); }

    std::size_t Read(char* bytes, std::size_t size) override {
        const ssize_t count = m_stop.Read(m_socket.Get(), bytes, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        WarnUnlessGone("A client is left, as it cannot be read from");
        return 0;
    }

    bool Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t sent =
                ::send(m_socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            } else if (errno != EINTR && !(errno == EAGAIN && AwaitRoom())) {
                WarnUnlessGone("A client is left, as no answer can be sent");
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
        int code = -1;
        while ((code = ::poll(&room, 1, kPatienceMs)) < 0 && errno == EINTR) {
        }
        return code == 1;
    }

    Descriptor m_socket;
    StopEvent m_stop;
};

class SocketListener final : public Listener {
public:
    SocketListener(Descriptor socket, std::string path)
        : m_socket(std::move(socket)), m_path(std::move(path)), m_identity(IdentityOf(m_path)) {}
    ~SocketListener() override {  // another agent's socket may have taken the place
        if (m_identity && m_identity == IdentityOf(m_path)) ::unlink(m_path.c_str());
    }

    std::unique_ptr<Channel> Accept() override {
        while (m_stop.AwaitInput(m_socket.Get())) {
            auto client = std::make_unique<SocketChannel>();
            if (!client->Accept(m_socket.Get())) {
                Wait(errno);
            } else if (client->IsOfOwnAccount()) {
                return client;
            } else {
                ServiceLocator::Get<ICLogger>()->Warn("A client of another account was refused");
            }
        }
        return nullptr;
    }

    void Stop() override { m_stop.Set(); }
    bool CanStop() const { return m_stop.IsMade(); }

private:
    /// Lets some time go when no descriptor is free, so that the waiting client costs no processor time.
    void Wait(int error) const {
        if (error != EMFILE && error != ENFILE && error != ENOMEM && error != ENOBUFS) return;
        ServiceLocator::Get<ICLogger>()->Warn("A client waits: %s", SystemErrorText(error).c_str());
        ::usleep(100'000);
    }

    Descriptor m_socket;
    std::string m_path;
    std::optional<FileIdentity> m_identity;
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

/// Held while an agent takes its place. Of two that start at once, one would take the socket of the other for
/// a leftover before the other listens at it. Whoever may not make the file cannot take the place either.
class PlaceLock {
public:
    explicit PlaceLock(const std::string& path) : m_path(path + ".lock") {
        while (!m_isHeld && Open() && Lock())  // its last holder may just have removed it
            m_isHeld = IdentityOf(m_file.Get()) == IdentityOf(m_path);
    }
    ~PlaceLock() {
        if (m_isHeld) ::unlink(m_path.c_str());
    }
    PlaceLock(const PlaceLock&) = delete;
    PlaceLock& operator=(const PlaceLock&) = delete;

private:
    /// False for another account's file, which that could hold for ever.
    bool Open() {
        m_file =
            Descriptor(::open(m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
        struct stat status {};
        return m_file && ::fstat(m_file.Get(), &status) == 0 && status.st_uid == ::geteuid();
    }
    bool Lock() const {
        int code = 0;
        while ((code = ::flock(m_file.Get(), LOCK_EX)) != 0 && errno == EINTR) {
        }
        return code == 0;
    }

    std::string m_path;
    Descriptor m_file;
    bool m_isHeld = false;
};

/// Nobody but the owner may connect, from the socket's first moment on.
int BindPrivately(int socket, const sockaddr_un& address) {
    const mode_t mask = ::umask(S_IRWXG | S_IRWXO | S_IXUSR);
    const int code =
        ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
    ::umask(mask);
    return code;
}

/// Returns the absolute path: any module may change the working directory.
std::string Fixed(const std::string& path) {
    std::error_code error;
    const std::filesystem::path fixed = std::filesystem::absolute(path, error);
    return error ? path : fixed.string();
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
    const PlaceLock lock(path);
    RemoveLeftover(name);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int code = socket ? BindPrivately(socket.Get(), name) : errno;
    if (code == 0 && ::listen(socket.Get(), kBacklog) != 0) code = errno;
    auto listener = code == 0 ? std::make_unique<SocketListener>(std::move(socket), Fixed(path)) : nullptr;
    if (listener != nullptr && !listener->CanStop()) {
        code = errno;
        listener.reset();
    }
    fault = code == 0 ? "" : SystemErrorText(code);
    return listener;
}

}  // namespace quillon::agent
