#pragma once

#include <atomic>

namespace quillon::test {

/// Makes calls of the C library fail in this process, which the linker leads here (see
/// tests/CMakeLists.txt): the way to the library's own answer to a failure of the system.
struct FailingCalls {
    std::atomic<bool> hostName{false};     ///< gethostname
    std::atomic<bool> addressInfo{false};  ///< getaddrinfo
    std::atomic<bool> nameInfo{false};     ///< getnameinfo
};
FailingCalls& TheFailingCalls();

}  // namespace quillon::test
