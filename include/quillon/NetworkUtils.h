#pragma once

#include <memory>
#include <string>

#include "quillon/Export.h"

struct addrinfo;

namespace quillon {

/// Names, addresses and ranges of the network. Texts are UTF-8. Any thread. Entries go
/// to the registered logger.
class QUILLON_API NetworkUtils {
public:
    NetworkUtils() = delete;

    // --- The computer's names, found out once; the texts live as long as the process ---

    /// Without its domain; "unknown_host" when the system has none.
    static const char* GetHostName();
    static const char* GetFqdn();
    /// The flat (NetBIOS) name of the domain; "(unknown)" when it cannot be told.
    static const char* GetDomainName();

    // --- Look-up ---

    /// getaddrinfo() that gives up after `timeoutSecs` seconds (at least 1): its result, or -1, with
    /// a Warn entry and `result` empty. The look-up itself then ends in the background.
    /// Callers that ask the same at the same time share one, but each gets a list of its own; with 16
    /// under way, others wait, within their limit, for a place. When the list is a copy, which
    /// freeaddrinfo() must not free, FreeAddrInfoRobust becomes the deleter of `result`.
    static int getaddrinfo_OrTimeout(const char* node, const char* service, addrinfo* hints,
                                     std::unique_ptr<addrinfo, void (*)(addrinfo*)>& result, int timeoutSecs);
    /// Frees any list of getaddrinfo() and of getaddrinfo_OrTimeout(); null is ignored.
    static void FreeAddrInfoRobust(addrinfo* list);

    // --- Addresses ---

    /// `family` is 2 (a sockaddr_in) or 23 (a sockaddr_in6), on every system; the family in the address is
    /// the system's. Sockets are started. Texts are read as Windows reads them: in IPv4 "010" is octal,
    /// "0x10" hexadecimal and "10.1" is 10.0.0.1, ":PORT" may follow; IPv6 may have "%SCOPE", or brackets and
    /// ":PORT".
    static bool XpFriendlyIpStringToAddress(int family, const char* text, void* address);
    /// Of a socket address of `length` bytes, 16 when 0; `family` is not used. Empty on failure.
    static std::string XpFriendlyAddressToIpString(int family, void* address, unsigned long length);
    /// The text when it is a name in lower case, else empty.
    static std::string FqdnOrBlank(const std::string& text);
    /// The address, without brackets, when the text has the form of one, else empty.
    static std::string IpAddressOrBlank(const std::string& text);
    /// Whether an IPv4 address lies in one of the ranges, "10.0.0.1-10.0.0.9,...". Blanks do not
    /// matter, nor the order of a range's ends. Bad input is logged and answers false.
    static bool IpInRange(const std::string& address, const std::string& ranges);
    /// Whether an IPv4 or IPv6 address lies in "network/prefix length". False, with nothing logged, when
    /// either is malformed (IPv4 has four numbers; no port, scope or brackets) or they are of different
    /// kinds.
    static bool IpInCidr(const std::string& address, const std::string& cidr);
    /// Of sockaddr_in: the address fields as they are stored.
    static bool IsIpv4AddressIsHigher(const void* a, const void* b);
    static bool IsIpv4InRange(const void* address, const void* low, const void* high);
    /// The lowest byte first.
    static std::string FormatIpV4AddressAsString(unsigned long address);
    /// "00-1a-...".
    static std::string FormatMacAddressAsString(unsigned long length, unsigned char* bytes);
    /// "10.1.2.0/24"; only the mask's lowest set bit counts. Empty when either text has not four numbers.
    static std::string GetNetworkCidrAddressFromAddressAndMask(const std::string& address,
                                                               const std::string& mask);
};

}  // namespace quillon
