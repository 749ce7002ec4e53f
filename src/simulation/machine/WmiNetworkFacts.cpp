#include <net/if.h>

#include <charconv>
#include <filesystem>

#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

namespace fs = std::filesystem;

/// Values of Win32_NetworkAdapter.NetConnectionStatus.
enum ConnectionStatus { kDisconnected = 0, kConnected = 2, kMediaDisconnected = 7 };
constexpr int kEthernetHardware = 1;  // ARPHRD_ETHER
constexpr int kEthernet = 0;          // of Win32_NetworkAdapter.AdapterTypeId
constexpr int kWireless = 9;

struct Adapter {
    std::string name;

    [[nodiscard]] std::string Path(const char* file) const { return "/sys/class/net/" + name + '/' + file; }
    [[nodiscard]] std::optional<std::string> Text(const char* file) const { return ReadFact(Path(file)); }
    [[nodiscard]] std::optional<long long> Number(const char* file) const {
        const std::string text = Text(file).value_or("");
        const bool isHex = text.starts_with("0x");
        long long number = 0;
        const char* const first = text.data() + (isHex ? 2 : 0);
        const auto error = std::from_chars(first, text.data() + text.size(), number, isHex ? 16 : 10).ec;
        return error == std::errc() ? std::optional(number) : std::nullopt;
    }
    [[nodiscard]] bool Has(const char* file) const {
        std::error_code error;
        return fs::exists(Path(file), error);
    }
};

std::vector<Adapter> ListAdapters() {
    std::vector<Adapter> adapters;
    const std::string folder = "/sys/class/net";
    for (const std::string& name : NamesWithin(folder)) {
        std::error_code error;
        if (fs::is_directory(folder + '/' + name, error)) adapters.push_back({name});
    }
    return adapters;
}

bool IsEnabled(const Adapter& adapter) { return (adapter.Number("flags").value_or(0) & IFF_UP) != 0; }

ConnectionStatus StatusOf(const Adapter& adapter) {
    const std::string state = adapter.Text("operstate").value_or("");
    // A device that does not tell, such as the loopback, is as its switch is.
    if (state == "up" || (state == "unknown" && IsEnabled(adapter))) return kConnected;
    return IsEnabled(adapter) && adapter.Number("carrier") == 0 ? kMediaDisconnected : kDisconnected;
}

std::optional<int> AdapterType(const Adapter& adapter) {
    if (adapter.Has("wireless") || adapter.Has("phy80211")) return kWireless;
    return adapter.Number("type") == kEthernetHardware ? std::optional(kEthernet) : std::nullopt;
}

WmiFact TypeText(const Adapter& adapter) {
    const auto type = AdapterType(adapter);
    if (!type) return {};
    return *type == kWireless ? "Wireless" : "Ethernet 802.3";
}

WmiFact AddressOf(const Adapter& adapter) {
    auto address = adapter.Text("address");
    if (!address || adapter.Number("type") != kEthernetHardware) return {};
    for (char& c : *address) c = base::Upper(c);
    return *address;
}

/// Bits a second; the system counts in millions, and tells -1 when it does not know.
WmiFact SpeedOf(const Adapter& adapter) {
    const auto speed = adapter.Number("speed");
    return speed && *speed >= 0 ? WmiFact(*speed * 1'000'000) : WmiFact();
}

WmiFact DriverOf(const Adapter& adapter) {
    std::error_code error;
    const auto driver = fs::read_symlink(adapter.Path("device/driver"), error);
    return error ? WmiFact() : WmiFact(driver.filename().string());
}

}  // namespace

WmiClass NetworkAdapterClass() {
    using A = Adapter&;
    const auto name = [](A a) { return a.name; };
    const auto index = [](A a) { return a.Number("ifindex"); };
    return MakeLiveClass<Adapter>(
        L"Win32_NetworkAdapter", {L"DeviceID"},
        {
            {L"AdapterType", CIM_STRING, [](A a) { return TypeText(a); }},
            {L"AdapterTypeId", CIM_UINT16, [](A a) { return AdapterType(a); }},
            {L"Availability", CIM_UINT16},
            {L"Caption", CIM_STRING, name},
            {L"CreationClassName", CIM_STRING, [](A) { return "Win32_NetworkAdapter"; }},
            {L"Description", CIM_STRING, name},
            {L"DeviceID", CIM_STRING, [](A a) { return a.Text("ifindex"); }},
            {L"GUID", CIM_STRING},
            {L"Index", CIM_UINT32, index},
            {L"InstallDate", CIM_DATETIME},
            {L"Installed", CIM_BOOLEAN, [](A) { return true; }},
            {L"InterfaceIndex", CIM_UINT32, index},
            {L"MACAddress", CIM_STRING, [](A a) { return AddressOf(a); }},
            {L"Manufacturer", CIM_STRING},
            {L"MaxSpeed", CIM_UINT64},
            {L"Name", CIM_STRING, name},
            {L"NetConnectionID", CIM_STRING, name},
            {L"NetConnectionStatus", CIM_UINT16, [](A a) { return static_cast<int>(StatusOf(a)); }},
            {L"NetEnabled", CIM_BOOLEAN, [](A a) { return IsEnabled(a); }},
            {L"PermanentAddress", CIM_STRING},
            {L"PhysicalAdapter", CIM_BOOLEAN, [](A a) { return a.Has("device"); }},
            {L"PNPDeviceID", CIM_STRING},
            {L"ProductName", CIM_STRING},
            {L"ServiceName", CIM_STRING, [](A a) { return DriverOf(a); }},
            {L"Speed", CIM_UINT64, [](A a) { return SpeedOf(a); }},
            {L"Status", CIM_STRING},
            {L"SystemCreationClassName", CIM_STRING, [](A) { return "Win32_ComputerSystem"; }},
            {L"SystemName", CIM_STRING, [](A) { return NodeName(); }},
            {L"TimeOfLastReset", CIM_DATETIME},
        },
        ListAdapters);
}

}  // namespace quillon::simulation
