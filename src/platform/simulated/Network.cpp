#include "platform/simulated/Network.h"

namespace quillon::platform::simulated {

Network& TheNetwork() {
    static Network instance;
    return instance;
}

}  // namespace quillon::platform::simulated
