#include "host/Cancellation.h"

#include "host/ShutdownCallbacks.h"

namespace quillon::agent {

constinit thread_local const Cancellation* InvocationScope::t_current = nullptr;

void Cancellation::Cancel() {
    m_isCancelled = true;
    ShutdownCallbacks::Instance().Call(*this);
}

}  // namespace quillon::agent
