#include "support/posix/FailingCalls.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace quillon::test {

FailingCalls& TheFailingCalls() {
    static FailingCalls& calls = *new FailingCalls;  // threads may call while the process ends
    return calls;
}

}  // namespace quillon::test

using quillon::test::TheFailingCalls;

// The linker's option --wrap gives these names to the callers and the real functions their own.
extern "C" {

int __real_gethostname(char* name, std::size_t size);
int __real_getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** list);
int __real_getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t hostSize,
                       char* service, socklen_t serviceSize, int flags);

int __wrap_gethostname(char* name, std::size_t size) {
    if (!TheFailingCalls().hostName) return __real_gethostname(name, size);
    errno = EFAULT;
    return -1;
}

int __wrap_getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** list) {
    if (const int code = TheFailingCalls().addressInfo; code != 0) return code;
    if (const int seconds = TheFailingCalls().addressInfoSeconds; seconds > 0) {
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        return EAI_AGAIN;
    }
    return __real_getaddrinfo(node, service, hints, list);
}

int __wrap_getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t hostSize,
                       char* service, socklen_t serviceSize, int flags) {
    if (TheFailingCalls().nameInfo) return EAI_FAIL;
    return __real_getnameinfo(address, length, host, hostSize, service, serviceSize, flags);
}

}  // extern "C"
