#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>
#include <sstream>

#include "platform/AdapterApi.h"
#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

struct Configuration {
    std::string name;
    std::uint32_t index = 0;
    std::vector<std::string> addresses, masks;  // those of IPv4 first, in the same order
};

/// The length of the prefix for IPv6, the mask itself for IPv4.
std::string MaskText(const platform::AdapterAddress& address) {
    if (address.address.size != base::IpAddress::kIpv4Size) return std::to_string(address.prefix);
    base::IpAddress mask{{}, base::IpAddress::kIpv4Size};
    constexpr int kBits = 8;
    for (int bit = 0; bit < address.prefix; ++bit)
        mask.bytes[static_cast<std::size_t>(bit / kBits)] |= static_cast<std::uint8_t>(0x80 >> bit % kBits);
    return base::IpAddressText(mask);
}

Configuration ConfigurationOf(const platform::Adapter& adapter) {
    Configuration configuration{adapter.name, adapter.index, {}, {}};
    for (const auto size : {base::IpAddress::kIpv4Size, base::IpAddress::kIpv6Size})
        for (const auto& each : adapter.addresses) {
            if (each.address.size != size) continue;
            configuration.addresses.push_back(base::IpAddressText(each.address));
            configuration.masks.push_back(MaskText(each));
        }
    return configuration;
}

std::vector<Configuration> ListConfigurations() {
    const auto adapters = platform::ListAdapters().value_or(std::vector<platform::Adapter>());
    std::vector<Configuration> found;
    std::transform(adapters.begin(), adapters.end(), std::back_inserter(found), &ConfigurationOf);
    return found;
}

/// The table of routes has the address as a hexadecimal number whose bytes are the machine's.
std::optional<std::string> GatewayText(const std::string& number) {
    std::uint32_t address = 0;
    const auto end = std::from_chars(number.data(), number.data() + number.size(), address, 16);
    if (end.ec != std::errc() || address == 0) return std::nullopt;
    return base::IpAddressText(base::MakeIpAddress(&address, sizeof address));
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
