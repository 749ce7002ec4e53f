#include "quillon/ThreadUtils.h"

#include <gmock/gmock.h>

#include <fstream>
#include <limits>

#include "support/System.h"

namespace quillon {

TEST(ThreadUtils, NamesTheCurrentThreadOnly) {
    const struct {
        std::string name, onLinux;
    } cases[] = {{"work", "Vantora-work"},
                 {"", "Vantora-work"},
                 {"worker", "Vantora-worker"},
                 {"longer name", "Vantora-longer "},
                 {"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", "Vantora-\xC3\xA9\xC3\xA9\xC3\xA9"},
                 {std::string(100'000, 'x'), "Vantora-xxxxxxx"}};
    std::thread([&] {
        for (const auto& c : cases) {
            SCOPED_TRACE(c.name);
            ThreadUtils::SetThreadName(c.name);  // without a debugger, an exception that nobody sees
            if (test::kWindows) continue;
            std::ifstream file("/proc/thread-self/comm");
            std::string name;
            std::getline(file, name);
            EXPECT_EQ(name, c.onLinux);
        }
    }).join();
}

TEST(ThreadUtils, DoesNotSleepForThePast) {
    for (const long long past : {0LL, -1LL, std::numeric_limits<long long>::min()}) {
        ThreadUtils::ThreadSleepMs(past);  // or this test would never end
    }
}

}  // namespace quillon
