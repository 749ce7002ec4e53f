#include "quillon/ComScope.h"

#include "quillon/ICLogger.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

ComScope::ComScope() : m_thread(std::this_thread::get_id()), m_initialized(ComInitialization::Initialize()) {}

ComScope::~ComScope() {
    if (!m_initialized) return;
    if (m_thread == std::this_thread::get_id()) {
        ComInitialization::Uninitialize();
        return;
    }
    try {
        if (ICLogger* const logger = detail::RegisteredLoggerIfAny())
            logger->Fatal("COM is left initialized: its scope ends on another thread than it began on");
    } catch (...) {  // a host's logger threw; an exception here would end the process
    }
}

}  // namespace quillon
