#include "platform/posix/ProcFile.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/Handle.h"

namespace quillon::platform {

std::optional<std::string> ReadProcessFile(pid_t process, const char* name) {
    constexpr std::size_t kPiece = 4096;
    const std::string path = "/proc/" + std::to_string(process) + '/' + name;
    const FileHandle file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) return std::nullopt;
    std::string content;
    for (;;) {
        const std::size_t length = content.size();
        content.resize(std::max(kPiece, length * 2));
        const ssize_t count = ::read(file.Get(), content.data() + length, content.size() - length);
        content.resize(length + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count < 0) return std::nullopt;
        if (count == 0) return content;
    }
}

}  // namespace quillon::platform
