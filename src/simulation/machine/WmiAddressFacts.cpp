#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <memory>
#include <sstream>

#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

struct Configuration {
    std::string name;
    unsigned int index = 0;
    std::vector<std::string> addresses, masks;  // those of IPv4 first, in the same order
};

std::string AddressText(const sockaddr& address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    const void* const field =
        address.sa_family == AF_INET
            ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in&>(address).sin_addr)
            : &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
    return ::inet_ntop(address.sa_family, field, text.data(), text.size()) == nullptr ? "" : text.data();
}

/// The length of the prefix for IPv6, the mask itself for IPv4.
std::string MaskText(const sockaddr& mask) {
    if (mask.sa_family == AF_INET) return AddressText(mask);
    int bits = 0;
    for (const std::uint8_t byte : reinterpret_cast<const sockaddr_in6&>(mask).sin6_addr.s6_addr)
        bits += std::popcount(byte);
    return std::to_string(bits);
}

void AddAddresses(const ifaddrs* list, int family, std::vector<Configuration>& configurations) {
    for (; list != nullptr; list = list->ifa_next) {
        if (list->ifa_addr == nullptr || list->ifa_addr->sa_family != family) continue;
        for (Configuration& each : configurations) {
            if (each.name != list->ifa_name) continue;
            each.addresses.push_back(AddressText(*list->ifa_addr));
            each.masks.push_back(list->ifa_netmask == nullptr ? "" : MaskText(*list->ifa_netmask));
        }
    }
}

std::vector<Configuration> ListConfigurations() {
    std::vector<Configuration> found;
    const std::unique_ptr<struct if_nameindex, decltype(&::if_freenameindex)> names(::if_nameindex(),
                                                                                    &::if_freenameindex);
    for (const auto* each = names.get(); each != nullptr && each->if_index != 0; ++each)
        found.push_back({each->if_name, each->if_index, {}, {}});
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) return found;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    AddAddresses(list, AF_INET, found);
    AddAddresses(list, AF_INET6, found);
    return found;
}

/// The table of routes has the address as a hexadecimal number whose bytes are the machine's.
std::optional<std::string> GatewayText(const std::string& number) {
    in_addr address{};
    const auto end = std::from_chars(number.data(), number.data() + number.size(), address.s_addr, 16);
    if (end.ec != std::errc() || address.s_addr == 0) return std::nullopt;
    std::array<char, INET_ADDRSTRLEN> text{};
    return ::inet_ntop(AF_INET, &address, text.data(), text.size());
}

std::vector<std::string> GatewaysOf(const Configuration& configuration) {
    std::vector<std::string> gateways;
    std::istringstream lines(ReadFact("/proc/net/route").value_or(""));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string name, destination, gateway;
        if (!(fields >> name >> destination >> gateway) || name != configuration.name) continue;
        const auto text = GatewayText(gateway);
        if (destination == "00000000" && text) gateways.push_back(*text);
    }
    return gateways;
}

std::vector<std::string> NameServers() {
    std::vector<std::string> servers;
    std::istringstream lines(ReadFact("/etc/resolv.conf").value_or(""));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string word, server;
        if (fields >> word >> server && word == "nameserver") servers.push_back(server);
    }
    return servers;
}

WmiFact HardwareAddress(const Configuration& configuration) {
    const std::string folder = "/sys/class/net/" + configuration.name;
    if (ReadFact(folder + "/type") != "1") return {};  // ARPHRD_ETHER
    auto address = ReadFact(folder + "/address");
    for (char& c : address.emplace(address.value_or(""))) c = base::Upper(c);
    return address;
}

}  // namespace

WmiClass NetworkAdapterConfigurationClass() {
    using C = Configuration&;
    constexpr CIMTYPE kTexts = CIM_STRING | CIM_FLAG_ARRAY;
    const auto name = [](C c) { return c.name; };
    const auto index = [](C c) { return c.index; };
    const auto isEnabled = [](C c) { return !c.addresses.empty(); };
    return MakeLiveClass<Configuration>(
        L"Win32_NetworkAdapterConfiguration", {L"Index"},
        {
            {L"Caption", CIM_STRING, name},
            {L"DefaultIPGateway", kTexts, [](C c) { return GatewaysOf(c); }},
            {L"Description", CIM_STRING, name},
            {L"DHCPEnabled", CIM_BOOLEAN},
            {L"DHCPServer", CIM_STRING},
            {L"DNSDomain", CIM_STRING},
            {L"DNSHostName", CIM_STRING, [](C) { return NodeName(); }},
            {L"DNSServerSearchOrder", kTexts,
             [isEnabled](C c) { return isEnabled(c) ? WmiFact(NameServers()) : WmiFact(); }},
            {L"Index", CIM_UINT32, index},
            {L"InterfaceIndex", CIM_UINT32, index},
            {L"IPAddress", kTexts, [](C c) { return c.addresses; }},
            {L"IPEnabled", CIM_BOOLEAN, isEnabled},
            {L"IPSubnet", kTexts, [](C c) { return c.masks; }},
            {L"MACAddress", CIM_STRING, [](C c) { return HardwareAddress(c); }},
            {L"ServiceName", CIM_STRING},
            {L"SettingID", CIM_STRING},
        },
        ListConfigurations);
}

}  // namespace quillon::simulation
