#include "Modules.h"

#include "CommandsModule.h"

namespace quillon::agent {

ModuleList MakeModules() {
    ModuleList modules;
    modules.push_back(std::make_unique<CommandsModule>());
    return modules;
}

}  // namespace quillon::agent
