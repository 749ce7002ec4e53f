#include "Modules.h"

#include "AuditModule.h"
#include "CertificatesModule.h"
#include "CommandsModule.h"
#include "ContentModule.h"
#include "EventLogModule.h"
#include "FilesModule.h"
#include "NetworkModule.h"
#include "ProcessesModule.h"
#include "StoreModule.h"
#include "SystemModule.h"
#include "WmiModule.h"

namespace quillon::agent {

ModuleList MakeModules() {
    ModuleList modules;
    modules.push_back(std::make_unique<AuditModule>());
    modules.push_back(std::make_unique<CertificatesModule>());
    modules.push_back(std::make_unique<CommandsModule>());
    modules.push_back(std::make_unique<ContentModule>());
    modules.push_back(std::make_unique<EventLogModule>());
    modules.push_back(std::make_unique<FilesModule>());
    modules.push_back(std::make_unique<NetworkModule>());
    modules.push_back(std::make_unique<ProcessesModule>());
    modules.push_back(std::make_unique<StoreModule>());
    modules.push_back(std::make_unique<SystemModule>());
    modules.push_back(std::make_unique<WmiModule>());
    return modules;
}

}  // namespace quillon::agent
