#include "platform/LogFileApi.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// 0 when it cannot be told.
mode_t ModeOf(const FileHandle& file) {
    struct ::stat status {};
    return ::fstat(file.Get(), &status) == 0 ? status.st_mode : 0;
}

}  // namespace

FileHandle OpenLogFile(const std::string& path) {
    constexpr mode_t kOwnerWritesGroupReads = S_IRUSR | S_IWUSR | S_IRGRP;
    // A pipe that nobody reads would hold the caller up for ever.
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const auto native = NativePath(path);
    FileHandle file(native ? ::open(native->c_str(), flags, kOwnerWritesGroupReads) : -1);
    if (!file) {
        FailWithErrno();
    } else if (const mode_t mode = ModeOf(file); !S_ISREG(mode) && !S_ISCHR(mode)) {
        file.Reset();
        SetLastErrorCode(base::kInvalidParameter);
    } else {
        ::fcntl(file.Get(), F_SETFL, O_APPEND);
    }
    return file;
}

bool IsDiskFile(const FileHandle& file) { return S_ISREG(ModeOf(file)); }

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
