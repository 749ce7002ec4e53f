#include "platform/NetworkApi.h"

#include <array>
#include <cstring>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/Handle.h"
#include "platform/ResolverApi.h"
#include "platform/win32/WindowsHeaders.h"
// After <windows.h>:
#include <dsrole.h>
#include <ws2tcpip.h>

namespace quillon::platform {

namespace {

constexpr std::size_t kLongestAddressText = 66;

struct RoleTraits {
    using Type = DSROLE_PRIMARY_DOMAIN_INFO_BASIC*;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept { ::DsRoleFreeMemory(value); }
};

}  // namespace

bool StartSockets() {
    WSADATA data{};
    return ::WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

void StopSockets() { ::WSACleanup(); }

std::optional<std::string> HostName() {
    std::array<wchar_t, 255> name{};
    if (::GetHostNameW(name.data(), static_cast<int>(name.size())) != 0) return std::nullopt;
    return base::ToUtf8(name.data());
}

NameAnswer FullyQualifiedName() {
    DWORD length = 0;
    if (::GetComputerNameExW(ComputerNameDnsFullyQualified, nullptr, &length) != 0 ||
        ::GetLastError() != ERROR_MORE_DATA) {
        return {};
    }
    std::wstring name(++length, L'\0');
    if (::GetComputerNameExW(ComputerNameDnsFullyQualified, name.data(), &length) == 0) return {};
    name.resize(length);  // now without the terminator
    return {.name = base::ToUtf8(name)};
}

NameAnswer LoopbackName() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::array<wchar_t, 1025> host{};
    std::array<wchar_t, 32> service{};
    const int code = ::GetNameInfoW(reinterpret_cast<const sockaddr*>(&address), sizeof address, host.data(),
                                    static_cast<DWORD>(host.size()), service.data(),
                                    static_cast<DWORD>(service.size()), NI_NAMEREQD);
    if (code != 0) return {.name = std::nullopt, .mayComeLater = code == EAI_AGAIN};
    return {.name = base::ToUtf8(host.data())};
}

// The codes of the resolver are those of Windows Sockets.
std::string ResolverErrorText(int code) { return ErrorCodeText(code).value_or(""); }

std::optional<std::string> FlatDomainName() {
    PBYTE found = nullptr;
    if (::DsRoleGetPrimaryDomainInformation(nullptr, DsRolePrimaryDomainInfoBasic, &found) != ERROR_SUCCESS)
        return std::nullopt;
    const Handle<RoleTraits> role(reinterpret_cast<DSROLE_PRIMARY_DOMAIN_INFO_BASIC*>(found));
    if (!role || role.Get()->DomainNameFlat == nullptr) return std::nullopt;
    return base::ToUtf8(role.Get()->DomainNameFlat);
}

bool TextToAddress(int family, const std::string& text, void* address) {
    if (family != kIpv4 && family != kIpv6) return false;
    auto wide = base::Utf8ToWide(text);
    if (!wide || wide->find(L'\0') != std::wstring::npos) return false;
    sockaddr_in6 result{};
    int length = static_cast<int>(family == kIpv4 ? kIpv4AddressSize : kIpv6AddressSize);
    if (::WSAStringToAddressW(wide->data(), family, nullptr, reinterpret_cast<sockaddr*>(&result), &length) !=
        0) {
        return false;
    }
    std::memcpy(address, &result, static_cast<std::size_t>(length));
    return true;
}

std::string AddressToText(const void* address, std::size_t length) {
    sockaddr_storage copy{};  // the system's call wants it writable
    if (length > sizeof copy) length = sizeof copy;
    std::memcpy(&copy, address, length);
    std::array<wchar_t, kLongestAddressText> text{};
    auto size = static_cast<DWORD>(text.size());
    if (::WSAAddressToStringW(reinterpret_cast<sockaddr*>(&copy), static_cast<DWORD>(length), nullptr,
                              text.data(), &size) != 0) {
        return {};
    }
    return base::ToUtf8(text.data());
}

}  // namespace quillon::platform
