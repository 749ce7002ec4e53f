#include "platform/native/ProcFile.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/Handle.h"
#include "platform/native/EntryNames.h"

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

std::optional<long long> NumberAfter(std::string_view text, std::string_view label) {
    const std::size_t at = text.find(label);
    if (at == std::string_view::npos) return std::nullopt;
    text.remove_prefix(at + label.size());
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<long long> CountEntries(const char* folder) {
    const auto names = EntryNames(folder);
    if (!names) return std::nullopt;
    return std::count_if(names->begin(), names->end(),
                         [](const std::string& name) { return name.front() != '.'; });
}

}  // namespace quillon::platform
