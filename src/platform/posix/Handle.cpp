#include "platform/Handle.h"

#include <unistd.h>

#include <cerrno>

namespace quillon::platform {

void FileTraits::Close(Type value) noexcept {
    const int code = errno;
    ::close(value);
    errno = code;
}

}  // namespace quillon::platform
