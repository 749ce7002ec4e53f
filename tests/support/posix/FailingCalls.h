#pragma once

#include <atomic>
#include <functional>

namespace quillon::test {

/// Makes calls of the C library fail in this process, which the linker leads here (see
/// tests/CMakeLists.txt): the way to the library's own answer to a failure of the system.
struct FailingCalls {
    std::atomic<bool> hostName{false};  ///< gethostname
    std::atomic<int> addressInfo{0};    ///< the code of getaddrinfo; 0: it does not fail
    /// Seconds for which getaddrinfo waits before it answers; it then says that no server was reached.
    std::atomic<int> addressInfoSeconds{0};
    std::atomic<bool> nameInfo{false};  ///< getnameinfo
};
FailingCalls& TheFailingCalls();

/// The same for the calls by which a thread reaches and changes files: open, openat, readdir, write, fsync,
/// fdatasync, rename, renameat, renameat2, mkdir and mkdirat. Every thread has its own.
struct FailingFileCalls {
    int failing = 0;  ///< the number of the call that fails, beginning with 1; 0: none
    int error = 0;    ///< its errno
    int seen = 0;     ///< calls until now
    /// A write takes only half of what it is given, as on a disk that is nearly full.
    bool writesHalf = false;
    /// What somebody else does in the next call of futimens.
    std::function<void()> meanwhile{};
};
FailingFileCalls& ThisThreadsFileCalls();

}  // namespace quillon::test
