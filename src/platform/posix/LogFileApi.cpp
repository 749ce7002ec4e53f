#include "platform/LogFileApi.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/Errno.h"
#include "platform/posix/NativePath.h"

namespace quillon::platform {

FileHandle OpenLogFile(const std::string& path) {
    constexpr mode_t kOwnerWritesGroupReads = S_IRUSR | S_IWUSR | S_IRGRP;
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY;
    FileHandle file(::open(NativePath(path).c_str(), flags, kOwnerWritesGroupReads));
    if (!file) FailWithErrno();
    return file;
}

Appended AppendToLogFile(const FileHandle& file, std::string_view text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ::ssize_t count = ::write(file.Get(), text.data() + done, text.size() - done);
        if (count >= 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            FailWithErrno();
            break;
        }
    }
    return {done, done == text.size()};
}

const char* NullDevice() { return "/dev/null"; }

}  // namespace quillon::platform
