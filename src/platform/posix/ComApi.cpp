#include "platform/ComApi.h"

#include "platform/simulated/Com.h"

namespace quillon {

std::int32_t platform::InitializeCom() { return simulated::TheCom().Initialize(); }

void platform::UninitializeCom() { simulated::TheCom().Uninitialize(); }

std::int32_t platform::InitializeComSecurity() { return simulated::TheCom().InitializeSecurity(); }

}  // namespace quillon
