#include "quillon/IDeviceInformation.h"

namespace quillon {

IDeviceInformation::~IDeviceInformation() = default;

}  // namespace quillon
