#include "platform/IdentifierApi.h"

#include <sys/random.h>

#include <cerrno>

namespace quillon::platform {

bool CreateIdentifier(GUID& guid) {
    // So few bytes come whole, but for a signal before the system's pool is ready.
    ssize_t filled;
    do {
        filled = ::getrandom(&guid, sizeof guid, 0);
    } while (filled < 0 && errno == EINTR);
    if (filled != sizeof guid) return false;

    guid.Data3 = static_cast<std::uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);   // version 4
    guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);  // the RFC's variant
    return true;
}

}  // namespace quillon::platform
