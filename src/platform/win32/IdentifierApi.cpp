#include "platform/IdentifierApi.h"

#include <cstring>

#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <rpc.h>

namespace quillon::platform {

bool CreateIdentifier(GUID& guid) {
    const RPC_STATUS status = ::UuidCreate(&guid);
    return status == RPC_S_OK || status == RPC_S_UUID_LOCAL_ONLY;
}

std::uint64_t RandomBits() {
    GUID guid{};
    std::uint64_t halves[2] = {};
    static_assert(sizeof halves == sizeof guid);
    if (CreateIdentifier(guid)) std::memcpy(halves, &guid, sizeof halves);
    return halves[0] ^ halves[1];  // the bits that are not random stand in one half only
}

}  // namespace quillon::platform
