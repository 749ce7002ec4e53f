#pragma once

#include <memory>
#include <vector>

#include "Module.h"

namespace quillon::agent {

using ModuleList = std::vector<std::unique_ptr<IModule>>;

/// Every module of the agent. The host's services and builder factories are registered before.
ModuleList MakeModules();

}  // namespace quillon::agent
