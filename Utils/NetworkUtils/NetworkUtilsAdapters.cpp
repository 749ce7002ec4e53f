#include <array>
#include <optional>
#include <string>

#include "platform/AdapterApi.h"
#include "platform/KeptError.h"
#include "quillon/DataTable.h"
#include "quillon/ICLogger.h"
#include "quillon/NetworkUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

const char* TextOf(platform::AdapterState state) {
    constexpr std::array kTexts{"up",      "down",       "testing",       "unknown",
                                "dormant", "notPresent", "lowerLayerDown"};
    const auto index = static_cast<std::size_t>(state) - 1;
    return index < kTexts.size() ? kTexts[index] : "unknown";
}

std::optional<std::string> HardwareAddressText(platform::Adapter& adapter) {
    auto& bytes = adapter.hardwareAddress;
    if (bytes.empty()) return std::nullopt;
    return NetworkUtils::FormatMacAddressAsString(static_cast<unsigned long>(bytes.size()), bytes.data());
}

VariantList RowOf(platform::Adapter& adapter, const platform::AdapterAddress* address) {
    std::optional<std::string> family, text;
    std::optional<long long> prefix;
    if (address != nullptr) {
        family = address->address.size == base::IpAddress::kIpv4Size ? "IPv4" : "IPv6";
        text = base::IpAddressText(address->address);
        prefix = address->prefix;
    }
    VariantList row;
    row.Add("Name", adapter.name);
    row.Add("Description", adapter.description);
    row.Add("Index", static_cast<long long>(adapter.index));
    row.Add("State", TextOf(adapter.state));
    row.Add("MacAddress", HardwareAddressText(adapter));
    row.Add("Family", family);
    row.Add("Address", text);
    row.Add("Prefix", prefix);
    return row;
}

void AddRows(platform::Adapter& adapter, DataTable& table) {
    if (adapter.addresses.empty()) table.AddRow(RowOf(adapter, nullptr));
    for (const platform::AdapterAddress& address : adapter.addresses) table.AddRow(RowOf(adapter, &address));
}

}  // namespace

bool NetworkUtils::GetAdapters(DataTable& table) {
    table = DataTable();
    table.AddStringCol("Name");
    table.AddStringCol("Description");
    table.AddLongLongCol("Index");
    table.AddStringCol("State");
    table.AddStringCol("MacAddress");
    table.AddStringCol("Family");
    table.AddStringCol("Address");
    table.AddLongLongCol("Prefix");
    auto adapters = platform::ListAdapters();
    if (!adapters) {
        const platform::KeptError reason;
        if (ICLogger* const logger = detail::RegisteredLogger())
            logger->Error("Could not list the network adapters because: %s",
                          StringUtils::GetLastErrorAsString().c_str());
        return false;
    }
    for (platform::Adapter& adapter : *adapters) AddRows(adapter, table);
    return true;
}

}  // namespace quillon
