#include "common/TemporaryName.h"

#include <random>

namespace quillon::agent {

std::string MakeTemporaryName() {
    std::random_device random;
    return ".quillon-" + std::to_string(random()) + '-' + std::to_string(random()) + ".part";
}

}  // namespace quillon::agent
