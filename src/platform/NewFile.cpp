#include "platform/NewFile.h"

#include <cstdio>

#include "platform/IdentifierApi.h"

namespace quillon::platform {

std::string NewFileName() {
    char name[40];
    std::snprintf(name, sizeof name, ".quillon-%016llx.part", static_cast<unsigned long long>(RandomBits()));
    return name;
}

}  // namespace quillon::platform
