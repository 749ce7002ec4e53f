#include "quillon/ThreadUtils.h"

#include "platform/ThreadApi.h"
#include "quillon/MiscUtils.h"

namespace quillon {

void ThreadUtils::SetThreadName(const std::string& name) {
    constexpr std::size_t kLongestName = 127;
    if (name.empty()) return;
    platform::NameThread(("Vantora-" + name).substr(0, kLongestName));
}

void ThreadUtils::SetThreadName(const std::thread&, const std::string&) {}

unsigned long ThreadUtils::GetThreadId() { return platform::CurrentThreadId(); }

void ThreadUtils::ThreadSleepMs(long long ms) { MiscUtils::ThreadSleepMs(ms); }

}  // namespace quillon
