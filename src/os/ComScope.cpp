#include "quillon/ComScope.h"

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"

namespace quillon {

ComScope::ComScope() : m_thread(std::this_thread::get_id()), m_initialized(ComInitialization::Initialize()) {}

ComScope::~ComScope() {
    if (!m_initialized) return;
    if (m_thread == std::this_thread::get_id()) {
        ComInitialization::Uninitialize();
    } else if (ICLogger* const logger = ServiceLocator::Get<ICLogger>(true)) {
        logger->Fatal("COM is left initialized: its scope ends on another thread than it began on");
    }
}

}  // namespace quillon
