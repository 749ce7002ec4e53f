#include "platform/posix/Errno.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "platform/ErrorText.h"

namespace quillon::platform {

namespace {

struct Pair {
    int error;
    std::uint32_t code;
};

constexpr std::uint32_t kGeneralFailure = 31;  // ERROR_GEN_FAILURE

constexpr Pair kCodes[] = {
    {0, 0},
    {ENOENT, 2},             // ERROR_FILE_NOT_FOUND
    {ENOTDIR, 3},            // ERROR_PATH_NOT_FOUND
    {EMFILE, 4},             // ERROR_TOO_MANY_OPEN_FILES
    {ENFILE, 4},             // ERROR_TOO_MANY_OPEN_FILES
    {EACCES, 5},             // ERROR_ACCESS_DENIED
    {EPERM, 5},              // ERROR_ACCESS_DENIED
    {EISDIR, 5},             // ERROR_ACCESS_DENIED
    {ENXIO, 5},              // ERROR_ACCESS_DENIED: what is opened as a file is a socket
    {EBADF, 6},              // ERROR_INVALID_HANDLE
    {ENOMEM, 8},             // ERROR_NOT_ENOUGH_MEMORY
    {E2BIG, 206},            // ERROR_FILENAME_EXCED_RANGE
    {ENOEXEC, 193},          // ERROR_BAD_EXE_FORMAT
    {EXDEV, 17},             // ERROR_NOT_SAME_DEVICE
    {EROFS, 19},             // ERROR_WRITE_PROTECT
    {EIO, 1117},             // ERROR_IO_DEVICE
    {EBUSY, 32},             // ERROR_SHARING_VIOLATION
    {ETXTBSY, 32},           // ERROR_SHARING_VIOLATION
    {EAGAIN, 33},            // ERROR_LOCK_VIOLATION
    {ENOSYS, 50},            // ERROR_NOT_SUPPORTED
    {EOPNOTSUPP, 50},        // ERROR_NOT_SUPPORTED
    {EEXIST, 183},           // ERROR_ALREADY_EXISTS
    {EILSEQ, 123},           // ERROR_INVALID_NAME
    {EINVAL, 87},            // ERROR_INVALID_PARAMETER
    {ESRCH, 87},             // ERROR_INVALID_PARAMETER
    {ECHILD, 87},            // ERROR_INVALID_PARAMETER
    {EPIPE, 109},            // ERROR_BROKEN_PIPE
    {ENOSPC, 112},           // ERROR_DISK_FULL
    {EDQUOT, 112},           // ERROR_DISK_FULL
    {ENOTEMPTY, 145},        // ERROR_DIR_NOT_EMPTY
    {ENAMETOOLONG, 206},     // ERROR_FILENAME_EXCED_RANGE
    {EFBIG, 223},            // ERROR_FILE_TOO_LARGE
    {EINTR, 995},            // ERROR_OPERATION_ABORTED
    {EFAULT, 998},           // ERROR_NOACCESS
    {ELOOP, 1921},           // ERROR_CANT_RESOLVE_FILENAME
    {EADDRINUSE, 10048},     // WSAEADDRINUSE
    {EADDRNOTAVAIL, 10049},  // WSAEADDRNOTAVAIL
    {ENETDOWN, 10050},       // WSAENETDOWN
    {ENETUNREACH, 10051},    // WSAENETUNREACH
    {ECONNABORTED, 10053},   // WSAECONNABORTED
    {ECONNRESET, 10054},     // WSAECONNRESET
    {ENOTCONN, 10057},       // WSAENOTCONN
    {ETIMEDOUT, 10060},      // WSAETIMEDOUT
    {ECONNREFUSED, 10061},   // WSAECONNREFUSED
    {EHOSTUNREACH, 10065},   // WSAEHOSTUNREACH
};

}  // namespace

std::uint32_t WindowsCode(int errnoValue) {
    const auto* const found = std::ranges::find(kCodes, errnoValue, &Pair::error);
    return found != std::end(kCodes) ? found->code : kGeneralFailure;
}

bool FailWithErrno() {
    SetLastErrorCode(WindowsCode(errno));
    return false;
}

}  // namespace quillon::platform
