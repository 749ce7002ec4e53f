#include "platform/ThreadApi.h"

#include <pthread.h>
#include <unistd.h>

#include "base/Utf8Cut.h"

namespace quillon::platform {

void NameThread(const std::string& name) {
    constexpr std::size_t kLongestName = 15;
    const std::string shown(base::CutUtf8("Vantora-" + name, kLongestName));
    ::pthread_setname_np(::pthread_self(), shown.c_str());
}

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::gettid()); }

}  // namespace quillon::platform
