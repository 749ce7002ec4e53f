#include "platform/IdentifierApi.h"

#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <rpc.h>

namespace quillon::platform {

bool CreateIdentifier(GUID& guid) {
    const RPC_STATUS status = ::UuidCreate(&guid);
    return status == RPC_S_OK || status == RPC_S_UUID_LOCAL_ONLY;
}

}  // namespace quillon::platform
