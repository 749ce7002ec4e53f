#include "platform/SystemVersionApi.h"

#include "platform/native/KernelRelease.h"

namespace quillon::platform {

SystemVersion ReportedSystemVersion() {
    const auto numbers = KernelRelease();
    return {numbers[0], numbers[1]};
}

}  // namespace quillon::platform
