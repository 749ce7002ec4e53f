#include "platform/Utf.h"
#include "platform/posix/WmiFacts.h"
#include "platform/simulated/WmiRepository.h"

namespace quillon::platform::simulated {

WmiRepository& MachineRepository() {
    // Never destroyed: threads may query while the process ends.
    static WmiRepository& repository = []() -> WmiRepository& {
        auto& made = *new WmiRepository(ToWide(NodeName()));
        AddMachineFacts(made);
        return made;
    }();
    return repository;
}

}  // namespace quillon::platform::simulated
