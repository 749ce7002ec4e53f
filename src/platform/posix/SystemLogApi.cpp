#include "platform/SystemLogApi.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/Handle.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

bool SendToJournal(const std::string& socket, std::string_view datagram) {
    ::sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.size() >= sizeof address.sun_path) {
        SetLastErrorCode(base::kInvalidParameter);
        return false;
    }
    std::copy(socket.begin(), socket.end(), address.sun_path);
    const FileHandle descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor) return FailWithErrno();
    const ::ssize_t sent = ::sendto(descriptor.Get(), datagram.data(), datagram.size(), MSG_NOSIGNAL,
                                    reinterpret_cast<const ::sockaddr*>(&address), sizeof address);
    return sent == static_cast<::ssize_t>(datagram.size()) || FailWithErrno();
}

bool ReportEntry(const std::string&, EventKind, const std::string&) {
    SetLastErrorCode(base::kCallNotImplemented);
    return false;
}

}  // namespace quillon::platform
