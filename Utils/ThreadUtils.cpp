#include "quillon/ThreadUtils.h"

#include "platform/ThreadApi.h"
#include "quillon/MiscUtils.h"

namespace quillon {

void ThreadUtils::SetThreadName(const std::string& name) {
    if (!name.empty()) platform::NameThread(name);
}

void ThreadUtils::SetThreadName(const std::thread&, const std::string&) {}

unsigned long ThreadUtils::GetThreadId() { return platform::CurrentThreadId(); }

void ThreadUtils::ThreadSleepMs(long long ms) { MiscUtils::ThreadSleepMs(ms); }

}  // namespace quillon
