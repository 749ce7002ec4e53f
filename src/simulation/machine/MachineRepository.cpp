#include "base/Utf.h"
#include "simulation/machine/WmiFacts.h"
#include "simulation/wmi/WmiRepository.h"

namespace quillon::simulation {

WmiRepository& MachineRepository() {
    // Never destroyed: threads may query while the process ends.
    static WmiRepository& repository = []() -> WmiRepository& {
        auto& made = *new WmiRepository(base::ToWide(NodeName()));
        AddMachineFacts(made);
        return made;
    }();
    return repository;
}

}  // namespace quillon::simulation
