#include <SocketHeaders.h>  // of the system that is built for

#include "system/SystemFacts.h"

namespace quillon::agent {

std::vector<std::pair<void*, unsigned long>> SocketAddresses(const addrinfo* list) {
    std::vector<std::pair<void*, unsigned long>> addresses;
    for (; list != nullptr; list = list->ai_next)
        addresses.emplace_back(list->ai_addr, static_cast<unsigned long>(list->ai_addrlen));
    return addresses;
}

}  // namespace quillon::agent
