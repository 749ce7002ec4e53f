#include "quillon/IShutdownMonitor.h"

namespace quillon {

IShutdownMonitor::~IShutdownMonitor() = default;

}  // namespace quillon
