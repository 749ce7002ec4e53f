#include "platform/ThreadPoolApi.h"

#include <pthread.h>

#include <csignal>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/ThreadApi.h"
#include "quillon/DestructorFunctor.h"

namespace quillon::platform {

bool RunInBackground(std::function<void()> task, const char* name) {
    // The host's signals are for its own threads; a new thread inherits the mask.
    sigset_t all, before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    const DestructorFunctor restore([&before] { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); });
    try {
        std::thread([task = std::move(task), name] {
            NameThread(name);
            task();
        }).detach();
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

}  // namespace quillon::platform
