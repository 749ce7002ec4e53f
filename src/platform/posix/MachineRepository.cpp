#include "platform/simulated/WmiRepository.h"

namespace quillon::platform::simulated {

WmiRepository& MachineRepository() {
    static WmiRepository& repository = *new WmiRepository;  // threads may query while the process ends
    return repository;
}

}  // namespace quillon::platform::simulated
