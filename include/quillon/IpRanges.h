#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon {

/// A set of IPv4 and IPv6 addresses, read from a list of addresses, ranges and networks.
///
/// Addresses are read strictly: IPv4 as four decimal numbers of 0 to 255 without leading zeros, IPv6 as in
/// RFC 4291, section 2.2; a port, a scope or brackets are refused. Windows Sockets need not be started. A set
/// does not change once it is read, and copies share it, so any thread may use it. Nothing is logged.
///
/// @code
/// std::string problem;
/// const auto ranges = IpRanges::Read("10.0.0.0/8, 192.168.0.1-192.168.0.9, fe80::/10, ::1", problem);
/// if (!ranges) std::cerr << problem << '\n';
/// else std::cout << ranges->Holds("10.1.2.3").value_or(false) << '\n';  // 1
/// @endcode
///
/// A set that was moved from holds nothing.
class QUILLON_API IpRanges {
public:
    /// What ::ffff:10.0.0.1, an IPv4 address that is mapped into IPv6, is compared as.
    enum class Mapped {
        AsIpv6,  ///< an IPv6 address of its own
        AsIpv4,  ///< 10.0.0.1, in the list and in what is asked for
    };

    /// Makes the set that holds nothing.
    IpRanges();

    /// Reads pieces with commas between them, each an address, "LOW-HIGH" (the ends belong to it and may
    /// stand in either order) or "NETWORK/LENGTH" (bits beyond the length do not matter). Blanks around an
    /// address are ignored. Returns nothing for a malformed piece, also an empty one, and says in `problem`
    /// which one and why, such as "piece 2 '10.0.0.0/33': the length is more than 32".
    static std::optional<IpRanges> Read(std::string_view list, std::string& problem,
                                        Mapped mapped = Mapped::AsIpv6);

    /// Returns whether the text is one IPv4 or IPv6 address.
    [[nodiscard]] static bool IsAddress(std::string_view text);

    /// Returns whether the set holds the address, in time logarithmic in the number of pieces; nothing when
    /// the text is no address.
    [[nodiscard]] std::optional<bool> Holds(std::string_view address) const;

private:
    struct Set;

    explicit IpRanges(std::shared_ptr<const Set> set);

    std::shared_ptr<const Set> m_set;
};

}  // namespace quillon
