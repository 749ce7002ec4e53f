#include "base/Utf.h"
#include "simulation/com/Com.h"
#include "simulation/machine/WmiFacts.h"
#include "simulation/wmi/WmiRepository.h"

namespace quillon::simulation {

WmiRepository& MachineRepository() {
    // Never destroyed: threads may query while the process ends.
    static WmiRepository& repository = []() -> WmiRepository& {
        auto& made = *new WmiRepository(base::ToWide(NodeName()));
        AddMachineFacts(made);
        made.AskForCom([] { return TheCom().References() > 0; });
        return made;
    }();
    return repository;
}

}  // namespace quillon::simulation
