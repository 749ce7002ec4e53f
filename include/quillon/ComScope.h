#pragma once

#include <thread>

#include "quillon/ComInitialization.h"
#include "quillon/Export.h"

namespace quillon {

/// A ComInitialization that says whether it succeeded, and that must end on the thread
/// on which it began: ending elsewhere is logged at Fatal and leaves COM alone.
class QUILLON_API ComScope {
public:
    ComScope();
    ~ComScope();
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

    explicit operator bool() const { return m_initialized; }

private:
    std::thread::id m_thread;
    bool m_initialized;
};

}  // namespace quillon
