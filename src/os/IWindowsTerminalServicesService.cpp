#include "quillon/IWindowsTerminalServicesService.h"

namespace quillon {

IWindowsTerminalServicesService::~IWindowsTerminalServicesService() = default;

}  // namespace quillon
