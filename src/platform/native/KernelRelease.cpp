#include "platform/native/KernelRelease.h"

#include <sys/utsname.h>

#include <charconv>
#include <cstring>

namespace quillon::platform {

std::array<std::uint32_t, 4> KernelRelease() {
    std::array<std::uint32_t, 4> numbers{};
    utsname names{};
    if (::uname(&names) != 0) return numbers;
    const char* text = names.release;
    const char* const end = text + std::strlen(text);
    for (std::size_t i = 0; i < numbers.size() && text < end; ++i) {
        if (i > 0) ++text;  // one separator
        const auto [next, error] = std::from_chars(text, end, numbers[i]);
        if (error != std::errc()) break;
        text = next;
    }
    return numbers;
}

}  // namespace quillon::platform
