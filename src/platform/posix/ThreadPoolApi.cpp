#include "platform/ThreadPoolApi.h"

#include <pthread.h>

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace quillon {

bool platform::RunInBackground(std::function<void()> task) {
    // The host's signals are for its own threads; a new thread inherits the mask.
    sigset_t all, before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    bool hasStarted = true;
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) {
        hasStarted = false;
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return hasStarted;
}

}  // namespace quillon
