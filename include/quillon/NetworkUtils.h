#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "quillon/Export.h"

struct addrinfo;

namespace quillon {

class DataTable;

/// Tells the computer's names, looks names up within a time limit, and reads, writes and
/// compares addresses and ranges.
///
/// Texts are UTF-8. Every operation is thread-safe; only the look-up and the first call for a
/// name may block. Entries go to the registered logger, and only where it is said is one
/// written; nothing throws.
///
/// @code
/// if (NetworkUtils::IpInRange("10.0.0.5", "10.0.0.1-10.0.0.9, 192.168.0.1-192.168.0.9")) {
///     std::cout << NetworkUtils::GetHostName() << '\n';
/// }
/// std::cout << NetworkUtils::IpInCidr("fe80::1", "fe80::/10") << '\n';  // 1
/// std::cout << NetworkUtils::GetNetworkCidrAddressFromAddressAndMask("10.1.2.3", "255.255.255.0")
///           << '\n';  // 10.1.2.0/24
/// @endcode
class QUILLON_API NetworkUtils {
public:
    NetworkUtils() = delete;

    // --- The computer's names, found out once; the texts live as long as the process ---

    /// Returns the host's name up to its first dot; "unknown_host" when the system has none.
    static const char* GetHostName();
    /// Returns the fully qualified name, else the name of 127.0.0.1, else GetHostName(). Name servers may be
    /// asked. After 10 seconds without an answer, or when no server could be reached, returns GetHostName(),
    /// and a call a minute later asks again.
    static const char* GetFqdn();
    /// Returns the flat (NetBIOS) name of the domain or workgroup; "(unknown)" when it cannot
    /// be told, so always outside Windows.
    static const char* GetDomainName();

    // --- The computer's network adapters ---

    /// Replaces the table by the computer's network adapters, the loopback included: a row for each unicast
    /// address, and one for an adapter without an address. Columns: "Name" (as the system shows it, such as
    /// "eth0" or "Ethernet"), "Description", "Index" (whole number), "State" ("up", "down", "testing",
    /// "unknown", "dormant", "notPresent" or "lowerLayerDown", see RFC 2863, ifOperStatus), "MacAddress" (see
    /// FormatMacAddressAsString(); null without one), "Family" ("IPv4" or "IPv6"), "Address" (see RFC 5952;
    /// without a scope) and "Prefix" (bits of the network, whole number); the last three are null without an
    /// address. On failure returns false with an Error entry and the reason in the last error; the table then
    /// has its columns only.
    static bool GetAdapters(DataTable& table);

    // --- Look-up ---

    /// Calls the system's getaddrinfo() and waits at most `timeoutSecs` seconds, at least 1.
    /// Returns its result (0, with the list in `result`) and writes a Debug entry; after a
    /// time-out returns -1, empties `result` and writes the Warn entry " -> DNS resolution of X
    /// has timed out after N seconds". The look-up itself then ends in the background, on
    /// copies of the arguments. `hints` may be null and stays the caller's.
    ///
    /// Callers that ask the same at the same time share one look-up, but each gets a list of
    /// its own. At most 16 look-ups that somebody waits for run at once, and 256 in all; further
    /// callers wait for a place, within their limit, and one who gets none is told -1 with the
    /// Warn entry " -> DNS resolution of X has not started within N seconds: too many are under
    /// way". Addresses in figures and "localhost" need no place. A list that is a copy, as every list on
    /// Windows, must not be freed by freeaddrinfo(): `result` then has FreeAddrInfoRobust() as its deleter,
    /// whatever it had before; in other cases its deleter stays, so construct it with FreeAddrInfoRobust(). A
    /// look-up for which no thread can be had gives EAI_AGAIN. Windows Sockets are started when they are not.
    /// Texts, the canonical names in the list included, are UTF-8.
    static int getaddrinfo_OrTimeout(const char* node, const char* service, addrinfo* hints,
                                     std::unique_ptr<addrinfo, void (*)(addrinfo*)>& result, int timeoutSecs);
    /// Returns the system's text for a code that the look-up returned, such as "Name or service not known";
    /// for -1 "the look-up has timed out", and "code N" for a code without a text.
    static std::string LookupErrorText(int code);
    /// Sets how many look-ups may run at once, for the whole process: `awaited` of those that
    /// somebody waits for, and `all` together with those that were given up. At least 1.
    static void SetLookupLimits(std::size_t awaited, std::size_t all);
    /// Frees a list of getaddrinfo() or of getaddrinfo_OrTimeout(); null is ignored.
    static void FreeAddrInfoRobust(addrinfo* list);

    // --- Addresses ---

    /// Reads an address into a sockaddr_in (`family` 2) or a sockaddr_in6 (23), by these
    /// numbers on every system; the family that is stored in the address is the system's own.
    /// Returns false, and leaves `address` alone, for another family, a null pointer or a text
    /// that is no address. The caller starts Windows Sockets first (WindowsSockets.h).
    ///
    /// Texts are read as Windows reads them: in IPv4, "010" is octal, "0x10" hexadecimal,
    /// "10.1" is 10.0.0.1, and ":PORT" may follow; IPv6 may have "%SCOPE", or brackets and
    /// ":PORT".
    static bool XpFriendlyIpStringToAddress(int family, const char* text, void* address);
    /// Returns the text of a socket address of `length` bytes (0 means 16, a sockaddr_in), with
    /// its port and scope unless they are 0; `family` is not used. The empty text on failure.
    static std::string XpFriendlyAddressToIpString(int family, void* address, unsigned long length);
    /// Returns the text when it consists of a-z, 0-9, '-' and '.' only and has a letter that is
    /// neither first nor last, so not for an IPv4 address; else the empty text.
    static std::string FqdnOrBlank(const std::string& text);
    /// Returns the address, without square brackets, when the text has the form of one; else
    /// the empty text. Only the form is checked: "999.1.1.1" passes.
    static std::string IpAddressOrBlank(const std::string& text);
    /// Returns whether an IPv4 address lies in one of the ranges "LOW-HIGH", separated by
    /// commas; the ends belong to a range and may stand in either order, and white space does
    /// not matter. Returns false with an Error entry for an address, or any range, that is
    /// malformed, and with a Warn entry for an IPv6 address. IPv6 ranges are skipped with a
    /// Warn entry; when there are no others, an Error entry says so. A range with a number
    /// above 255 matches nothing. IpRanges (IpRanges.h) reads more kinds of lists, and says what is
    /// malformed.
    static bool IpInRange(const std::string& address, const std::string& ranges);
    /// Returns whether an IPv4 or IPv6 address lies in "NETWORK/LENGTH"; bits of the network
    /// beyond the length do not matter. Returns false, and logs nothing, when either is
    /// malformed (IPv4 is four decimal numbers without leading zeros; port, scope and brackets are
    /// refused) or the two are of different kinds.
    static bool IpInCidr(const std::string& address, const std::string& cidr);
    /// Returns whether the address field of the sockaddr_in `a` is above that of `b`, both read
    /// as they are stored; the order is that of the addresses only when the fields hold host
    /// byte order.
    static bool IsIpv4AddressIsHigher(const void* a, const void* b);
    /// Returns whether low <= address <= high, the fields being read in the same way.
    static bool IsIpv4InRange(const void* address, const void* low, const void* high);
    /// Returns four decimal numbers, the lowest byte first: 0x0100007F gives "127.0.0.1".
    static std::string FormatIpV4AddressAsString(unsigned long address);
    /// Returns two lower-case hexadecimal digits a byte, as "00-1a-..."; empty for a length of
    /// 0.
    static std::string FormatMacAddressAsString(unsigned long length, unsigned char* bytes);
    /// Returns the network and its prefix length, such as "10.1.2.0/24". Only the mask's lowest
    /// set bit tells the length; gaps are not noticed. Numbers above 255 are not refused. The
    /// empty text when either text does not begin with four numbers and dots.
    static std::string GetNetworkCidrAddressFromAddressAndMask(const std::string& address,
                                                               const std::string& mask);
};

}  // namespace quillon
