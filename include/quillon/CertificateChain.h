#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quillon/Certificate.h"
#include "quillon/Export.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/TimePoint.h"

namespace quillon {

/// Says what the chain of a certificate is checked against.
struct CertificateChainOptions {
    /// Certificates that may stand between the certificate and a root. They need not be trusted.
    std::vector<Certificate> intermediates;
    /// The only roots that are trusted. Without a value these are the system's: the stores of the account
    /// on Windows, the directory of OpenSSL elsewhere.
    std::optional<std::vector<Certificate>> roots;
    /// When the certificates must be valid; now without a value.
    std::optional<TimePoint> time;
    /// An identifier such as "1.3.6.1.5.5.7.3.1" (authentication of a server) that the certificate and all
    /// below the root must allow as an extended usage; empty for any usage. Names are not compared with a
    /// host.
    std::string usage;
    /// Whether revocation is checked. Outside Windows it cannot be, and is unknown.
    bool checksRevocation = false;
};

/// Holds the chain from a certificate to a root, and what is wrong with it. Thread-safe; nothing is
/// logged but what IsTrusted() says.
///
/// @code
/// CertificateChainOptions options;
/// options.intermediates = sent;
/// options.usage = "1.3.6.1.5.5.7.3.1";
/// const CertificateChain chain = CertificateChain::Check(server, options);
/// if (!chain.IsTrusted(IAgentConfiguration::Soft)) std::cout << chain.StatusText() << '\n';
/// @endcode
class QUILLON_API CertificateChain {
public:
    /// Builds and checks the chain. On Windows this may fetch missing certificates and revocation lists from
    /// the network, which takes as long as the system lets it.
    static CertificateChain Check(const Certificate& certificate,
                                  const CertificateChainOptions& options = {});

    /// Returns the errors as bits of CERT_TRUST_STATUS.dwErrorStatus, the same on every system; 0 when there
    /// are none, and 0x10000 (CERT_TRUST_IS_PARTIAL_CHAIN) also when the system could not check it.
    std::uint32_t Status() const { return m_status; }
    /// Returns the names of the bits, such as "CERT_TRUST_IS_NOT_TIME_VALID, CERT_TRUST_IS_UNTRUSTED_ROOT";
    /// empty when there are none.
    std::string StatusText() const;
    /// Returns whether there is no error, or none that ErrorHelper::AllowTrustError() does not allow.
    bool IsTrusted(IAgentConfiguration::CRLChecks crlChecks) const;
    /// Returns the certificates, the checked one first, as far as the chain could be built; none when the
    /// system could not check it.
    const std::vector<Certificate>& Certificates() const { return m_certificates; }

private:
    std::uint32_t m_status = 0;
    std::vector<Certificate> m_certificates;
};

}  // namespace quillon
