#include "platform/posix/Errno.h"

#include <cerrno>

#include "platform/ErrorText.h"

namespace quillon::platform {

std::uint32_t WindowsCode(int errnoValue) {
    switch (errnoValue) {
        case 0:
            return 0;
        case ENOENT:
            return 2;  // ERROR_FILE_NOT_FOUND
        case ENOTDIR:
            return 3;  // ERROR_PATH_NOT_FOUND
        case EMFILE:
        case ENFILE:
            return 4;  // ERROR_TOO_MANY_OPEN_FILES
        case EACCES:
        case EPERM:
        case EISDIR:
            return 5;  // ERROR_ACCESS_DENIED
        case EBADF:
            return 6;  // ERROR_INVALID_HANDLE
        case ENOMEM:
            return 8;  // ERROR_NOT_ENOUGH_MEMORY
        case E2BIG:
            return 206;  // ERROR_FILENAME_EXCED_RANGE, also for a command line
        case ENOEXEC:
            return 193;  // ERROR_BAD_EXE_FORMAT
        case EXDEV:
            return 17;  // ERROR_NOT_SAME_DEVICE
        case EROFS:
            return 19;  // ERROR_WRITE_PROTECT
        case EIO:
            return 1117;  // ERROR_IO_DEVICE
        case EBUSY:
        case ETXTBSY:
            return 32;  // ERROR_SHARING_VIOLATION
        case EAGAIN:
            return 33;  // ERROR_LOCK_VIOLATION
        case ENOSYS:
        case EOPNOTSUPP:
            return 50;  // ERROR_NOT_SUPPORTED
        case EEXIST:
            return 183;  // ERROR_ALREADY_EXISTS
        case EINVAL:
        case ESRCH:
        case ECHILD:
            return 87;  // ERROR_INVALID_PARAMETER
        case EPIPE:
            return 109;  // ERROR_BROKEN_PIPE
        case ENOSPC:
        case EDQUOT:
            return 112;  // ERROR_DISK_FULL
        case ENOTEMPTY:
            return 145;  // ERROR_DIR_NOT_EMPTY
        case ENAMETOOLONG:
            return 206;  // ERROR_FILENAME_EXCED_RANGE
        case EFBIG:
            return 223;  // ERROR_FILE_TOO_LARGE
        case EINTR:
            return 995;  // ERROR_OPERATION_ABORTED
        case EFAULT:
            return 998;  // ERROR_NOACCESS
        case ELOOP:
            return 1921;  // ERROR_CANT_RESOLVE_FILENAME
        case EADDRINUSE:
            return 10048;  // WSAEADDRINUSE
        case EADDRNOTAVAIL:
            return 10049;
        case ENETDOWN:
            return 10050;
        case ENETUNREACH:
            return 10051;
        case ECONNABORTED:
            return 10053;
        case ECONNRESET:
            return 10054;
        case ENOTCONN:
            return 10057;
        case ETIMEDOUT:
            return 10060;
        case ECONNREFUSED:
            return 10061;
        case EHOSTUNREACH:
            return 10065;
        default:
            return 31;  // ERROR_GEN_FAILURE
    }
}

bool FailWithErrno() {
    SetLastErrorCode(WindowsCode(errno));
    return false;
}

}  // namespace quillon::platform
