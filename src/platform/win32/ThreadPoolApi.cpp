#include "platform/ThreadPoolApi.h"

#include <memory>
#include <utility>

#include "platform/ModuleApi.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

using Task = std::function<void()>;

void CALLBACK RunTask(PTP_CALLBACK_INSTANCE, void* context) {
    const std::unique_ptr<Task> task(static_cast<Task*>(context));
    (*task)();
}

}  // namespace

bool RunInBackground(std::function<void()> task, const char*) {
    auto owned = std::make_unique<Task>(std::move(task));
    TP_CALLBACK_ENVIRON environment;
    ::InitializeThreadpoolEnvironment(&environment);
    ::SetThreadpoolCallbackRunsLong(&environment);
    ::SetThreadpoolCallbackLibrary(&environment, ModuleOfAddress(reinterpret_cast<void*>(&RunTask)));
    const bool hasStarted = ::TrySubmitThreadpoolCallback(&RunTask, owned.get(), &environment) != 0;
    ::DestroyThreadpoolEnvironment(&environment);
    if (hasStarted) static_cast<void>(owned.release());
    return hasStarted;
}

}  // namespace quillon::platform
