#include "platform/AdapterApi.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netpacket/packet.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/FileApi.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

/// As the kernel writes them (Documentation/networking/operstates).
constexpr std::array<std::pair<std::string_view, AdapterState>, 6> kStates{
    {{"up", AdapterState::Up},
     {"down", AdapterState::Down},
     {"testing", AdapterState::Testing},
     {"dormant", AdapterState::Dormant},
     {"notpresent", AdapterState::NotPresent},
     {"lowerlayerdown", AdapterState::LowerLayerDown}}};

/// The loopback and other devices without a carrier do not tell; they are as their switch is.
AdapterState StateOf(const std::string& name, unsigned int flags) {
    std::string text = ReadWholeFile("/sys/class/net/" + name + "/operstate").value_or("");
    while (text.ends_with('\n')) text.pop_back();
    const auto known = std::find_if(kStates.begin(), kStates.end(),
                                    [&text](const auto& each) { return each.first == text; });
    if (known != kStates.end()) return known->second;
    if ((flags & IFF_UP) == 0) return AdapterState::Down;
    return (flags & IFF_RUNNING) != 0 ? AdapterState::Up : AdapterState::Unknown;
}

/// An address may have a label of its own, such as "eth0:1".
std::string NameOf(const ifaddrs& entry) {
    const std::string_view label = entry.ifa_name;
    return std::string(label.substr(0, label.find(':')));
}

Adapter& FindOrAdd(const ifaddrs& entry, std::vector<Adapter>& adapters) {
    std::string name = NameOf(entry);
    const auto found = std::find_if(adapters.begin(), adapters.end(),
                                    [&name](const Adapter& each) { return each.name == name; });
    if (found != adapters.end()) return *found;
    Adapter& adapter = adapters.emplace_back();
    adapter.index = ::if_nametoindex(name.c_str());
    adapter.state = StateOf(name, entry.ifa_flags);
    adapter.description = name;
    adapter.name = std::move(name);
    return adapter;
}

int CountBits(const base::IpAddress& mask) {
    int bits = 0;
    for (const std::uint8_t byte : mask.bytes) bits += std::popcount(byte);
    return bits;
}

void TakeHardwareAddress(const sockaddr& address, Adapter& adapter) {
    sockaddr_ll link{};
    std::memcpy(&link, &address, sizeof link);
    const unsigned char* const begin = link.sll_addr;
    const unsigned char* const end = begin + std::min<std::size_t>(link.sll_halen, sizeof link.sll_addr);
    if (std::any_of(begin, end, [](unsigned char byte) { return byte != 0; }))
        adapter.hardwareAddress.assign(begin, end);
}

}  // namespace

std::optional<std::vector<Adapter>> ListAdapters() {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) {
        FailWithErrno();
        return std::nullopt;
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    std::vector<Adapter> adapters;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        Adapter& adapter = FindOrAdd(*entry, adapters);
        if (entry->ifa_addr == nullptr) continue;
        if (entry->ifa_addr->sa_family == AF_PACKET) {
            TakeHardwareAddress(*entry->ifa_addr, adapter);
        } else if (const auto address = IpAddressOf(entry->ifa_addr); address.size != 0) {
            adapter.addresses.push_back({address, CountBits(IpAddressOf(entry->ifa_netmask))});
        }
    }
    return adapters;
}

}  // namespace quillon::platform
