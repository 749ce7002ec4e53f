#include "platform/AdapterApi.h"

#include "platform/AddrInfo.h"

namespace quillon::platform {

base::IpAddress IpAddressOf(const sockaddr* address) {
    if (address == nullptr) return {};
    if (address->sa_family == AF_INET)
        return base::MakeIpAddress(&reinterpret_cast<const sockaddr_in*>(address)->sin_addr,
                                   base::IpAddress::kIpv4Size);
    if (address->sa_family == AF_INET6)
        return base::MakeIpAddress(&reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr,
                                   base::IpAddress::kIpv6Size);
    return {};
}

}  // namespace quillon::platform
