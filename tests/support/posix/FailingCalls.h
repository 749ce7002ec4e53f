#pragma once

#include <atomic>

namespace quillon::test {

/// Makes calls of the C library fail in this process, which the linker leads here (see
/// tests/CMakeLists.txt): the way to the library's own answer to a failure of the system.
struct FailingCalls {
    std::atomic<bool> hostName{false};     ///< gethostname
    std::atomic<bool> addressInfo{false};  ///< getaddrinfo
    /// Seconds for which getaddrinfo waits before it answers; it then says that no server was reached.
    std::atomic<int> addressInfoSeconds{0};
    std::atomic<bool> nameInfo{false};  ///< getnameinfo
};
FailingCalls& TheFailingCalls();

}  // namespace quillon::test
