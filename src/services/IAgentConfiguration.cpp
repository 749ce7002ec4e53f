#include "quillon/IAgentConfiguration.h"

namespace quillon {

IAgentConfiguration::~IAgentConfiguration() = default;

}  // namespace quillon
