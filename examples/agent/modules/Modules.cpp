#include "modules/Modules.h"

namespace quillon::agent {

ModuleList MakeModules() {
    constexpr std::unique_ptr<IModule> (*kMakers[])() = {
        &MakeAuditModule,    &MakeCertificatesModule, &MakeCommandsModule, &MakeContentModule,
        &MakeEventLogModule, &MakeFilesModule,        &MakeNetworkModule,  &MakeProcessesModule,
        &MakeStoreModule,    &MakeSystemModule,       &MakeWmiModule,
    };
    ModuleList modules;
    for (const auto make : kMakers) modules.push_back(make());
    return modules;
}

}  // namespace quillon::agent
