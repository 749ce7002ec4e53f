#include "platform/NewFile.h"

#include <cstdint>
#include <cstdio>
#include <random>

namespace quillon::platform {

std::string NewFileName() {
    std::random_device random;
    const std::uint64_t number = std::uint64_t{random()} << 32 | random();
    char name[40];
    std::snprintf(name, sizeof name, ".quillon-%016llx.part", static_cast<unsigned long long>(number));
    return name;
}

}  // namespace quillon::platform
