#include "platform/ThreadApi.h"

#include <pthread.h>
#include <unistd.h>

namespace quillon::platform {

void NameThread(const std::string& name) {
    constexpr std::size_t kLongestName = 15;
    std::size_t length = name.size();
    if (length > kLongestName) {
        length = kLongestName;
        while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
    }
    ::pthread_setname_np(::pthread_self(), name.substr(0, length).c_str());
}

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::gettid()); }

}  // namespace quillon::platform
