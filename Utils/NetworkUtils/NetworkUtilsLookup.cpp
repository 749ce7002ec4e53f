#include <algorithm>
#include <chrono>

#include "Utils/internal/NetworkLookup.h"
#include "quillon/ICLogger.h"
#include "quillon/NetworkUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

int NetworkUtils::getaddrinfo_OrTimeout(const char* node, const char* service, addrinfo* hints,
                                        std::unique_ptr<addrinfo, void (*)(addrinfo*)>& result,
                                        int timeoutSecs) {
    const int limit = std::max(timeoutSecs, 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limit);
    const auto found = LookUp(platform::QueryOf(node, service, hints), deadline);
    const char* const name = node == nullptr ? "(null)" : node;
    if (!found) {
        result.reset();
        if (ICLogger* const logger = detail::RegisteredLogger())
            logger->Warn(" -> DNS resolution of %s has timed out after %d seconds", name, limit);
        return -1;
    }
    if (found->isCopy) {
        result = {found->list, &FreeAddrInfoRobust};  // the system's function could not free it
    } else {
        result.reset(found->list);
    }
    if (ICLogger* const logger = detail::RegisteredLogger())
        logger->Debug(" -> DNS resolution of %s has returned within %d seconds", name, limit);
    return found->code;
}

void NetworkUtils::FreeAddrInfoRobust(addrinfo* list) { platform::FreeAddresses(list); }

}  // namespace quillon
