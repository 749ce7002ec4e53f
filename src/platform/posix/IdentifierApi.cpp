#include "platform/IdentifierApi.h"

#include <sys/random.h>

#include <cerrno>
#include <cstddef>

namespace quillon::platform {

namespace {

/// For a few bytes, which come whole but for a signal before the system's pool is ready.
bool Fill(void* bytes, std::size_t count) {
    ssize_t filled;
    do {
        filled = ::getrandom(bytes, count, 0);
    } while (filled < 0 && errno == EINTR);
    return filled == static_cast<ssize_t>(count);
}

}  // namespace

std::uint64_t RandomBits() {
    std::uint64_t bits = 0;
    return Fill(&bits, sizeof bits) ? bits : 0;
}

bool CreateIdentifier(GUID& guid) {
    if (!Fill(&guid, sizeof guid)) return false;

    guid.Data3 = static_cast<std::uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);   // version 4
    guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);  // the RFC's variant
    return true;
}

}  // namespace quillon::platform
