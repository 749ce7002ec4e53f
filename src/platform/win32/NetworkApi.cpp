#include "platform/NetworkApi.h"

#include <array>
#include <cstring>
#include <deque>
#include <new>

#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/Handle.h"
#include "platform/ResolverApi.h"
#include "platform/win32/WindowsHeaders.h"
#include "quillon/DestructorFunctor.h"
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

std::optional<std::wstring> WideOrNothing(const std::optional<std::string>& text) {
    return text ? std::optional(base::ToWide(*text)) : std::nullopt;
}

const wchar_t* TextOrNull(const std::optional<std::wstring>& text) { return text ? text->c_str() : nullptr; }

ADDRINFOW HintsOf(const std::array<int, 5>& fields) {
    ADDRINFOW hints{};
    hints.ai_flags = fields[0];
    hints.ai_family = fields[1];
    hints.ai_socktype = fields[2];
    hints.ai_protocol = fields[3];
    hints.ai_addrlen = static_cast<std::size_t>(fields[4]);
    return hints;
}

/// A copy in our own form, whose names are UTF-8.
addrinfo* CopyWideAddresses(const ADDRINFOW* wide) {
    std::deque<addrinfo> entries;
    std::deque<std::string> names;
    for (; wide != nullptr; wide = wide->ai_next) {
        addrinfo& entry = entries.emplace_back();
        entry.ai_flags = wide->ai_flags;
        entry.ai_family = wide->ai_family;
        entry.ai_socktype = wide->ai_socktype;
        entry.ai_protocol = wide->ai_protocol;
        entry.ai_addrlen = wide->ai_addrlen;
        entry.ai_addr = wide->ai_addr;
        if (wide->ai_canonname != nullptr) {
            entry.ai_canonname = names.emplace_back(base::ToUtf8(wide->ai_canonname)).data();
        }
        if (entries.size() > 1) entries[entries.size() - 2].ai_next = &entry;
    }
    return CopyAddresses(entries.empty() ? nullptr : &entries.front());
}

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
    if (code != 0) return {.name = std::nullopt, .mayComeLater = code == EAI_AGAIN || code == EAI_MEMORY};
    return {.name = base::ToUtf8(host.data())};
}

int AskSystem(const AddressQuery& query, addrinfo*& list) noexcept {
    ADDRINFOW* found = nullptr;
    const DestructorFunctor release([&found] {
        if (found != nullptr) ::FreeAddrInfoW(found);
    });
    try {
        const auto node = WideOrNothing(query.node), service = WideOrNothing(query.service);
        const ADDRINFOW hints = HintsOf(query.hints.value_or(std::array<int, 5>{}));
        const int code =
            ::GetAddrInfoW(TextOrNull(node), TextOrNull(service), query.hints ? &hints : nullptr, &found);
        if (code == 0) list = CopyWideAddresses(found);
        return code;
    } catch (const std::bad_alloc&) {
        return EAI_MEMORY;
    }
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
