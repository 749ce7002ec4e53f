#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::base {

/// What the extensions of an X.509 certificate say (RFC 5280, section 4.2.1). The views point into the
/// encoding.
struct CertificateExtensions {
    /// One name of the subject's alternative names.
    struct Name {
        int kind = 0;              ///< the number of the choice: 1 e-mail, 2 DNS, 4 directory, 6 URI, 7 IP
        std::string_view content;  ///< its encoding: a text, the bytes of an address, or a name
    };

    std::vector<Name> alternativeNames;
    /// Bit 0 of RFC 5280 is 0x80, bit 7 is 0x01 and bit 8 is 0x8000; nothing when every usage is allowed.
    std::optional<std::uint32_t> keyUsage;
    /// Identifiers such as "1.3.6.1.5.5.7.3.1"; nothing when every usage is allowed.
    std::optional<std::vector<std::string>> usages;
};

/// Reads the extensions of a certificate in DER. What is malformed is left out. Takes linear time.
CertificateExtensions ReadCertificateExtensions(std::string_view certificate);

}  // namespace quillon::base
