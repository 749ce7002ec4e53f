#include "platform/AdapterApi.h"

#include <memory>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <iphlpapi.h>
#include <ws2tcpip.h>

namespace quillon::platform {

namespace {

/// What the system's documentation advises to begin with.
constexpr ULONG kUsualSize = 15'000;
/// Interfaces may come between the two calls.
constexpr int kMostTries = 10;

std::string TextOf(const wchar_t* text) { return text == nullptr ? std::string() : base::ToUtf8(text); }

Adapter AdapterOf(const IP_ADAPTER_ADDRESSES& entry) {
    Adapter adapter;
    adapter.name = TextOf(entry.FriendlyName);
    adapter.description = TextOf(entry.Description);
    adapter.index = entry.IfIndex != 0 ? entry.IfIndex : entry.Ipv6IfIndex;
    adapter.state = static_cast<AdapterState>(entry.OperStatus);
    adapter.hardwareAddress.assign(entry.PhysicalAddress,
                                   entry.PhysicalAddress + entry.PhysicalAddressLength);
    for (const auto* each = entry.FirstUnicastAddress; each != nullptr; each = each->Next) {
        const auto address = IpAddressOf(each->Address.lpSockaddr);
        if (address.size != 0) adapter.addresses.push_back({address, each->OnLinkPrefixLength});
    }
    return adapter;
}

}  // namespace

std::optional<std::vector<Adapter>> ListAdapters() {
    constexpr ULONG kFlags = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
    ULONG size = kUsualSize;
    std::unique_ptr<char[]> buffer;
    ULONG error = ERROR_BUFFER_OVERFLOW;
    for (int tries = 0; error == ERROR_BUFFER_OVERFLOW && tries < kMostTries; ++tries) {
        buffer = std::make_unique<char[]>(size);
        error = ::GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr,
                                       reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.get()), &size);
    }
    std::vector<Adapter> adapters;
    if (error == ERROR_NO_DATA) return adapters;
    if (error != ERROR_SUCCESS) {
        SetLastErrorCode(error);
        return std::nullopt;
    }
    const auto* entry = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(buffer.get());
    for (; entry != nullptr; entry = entry->Next) adapters.push_back(AdapterOf(*entry));
    return adapters;
}

}  // namespace quillon::platform
