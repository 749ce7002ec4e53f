#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Handle.h"
#include "platform/ole/OleTypes.h"
#ifdef _WIN32
#include <wincrypt.h>
#endif

namespace quillon::platform {

/// Certificates as the system reads them: CERT_CONTEXT is complete here on both sides. A
/// failure is nothing or an empty handle.

struct CertificateTraits {
    using Type = const CERT_CONTEXT*;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept;
};
using CertificateHandle = Handle<CertificateTraits>;

/// The certificate at the beginning of `bytes`, in DER or as one PEM block.
CertificateHandle ReadCertificate(std::string_view bytes);
enum class CertificateStores { Computer, User, Service };
/// Appends the certificates of a store of the computer, of the account of the process, or of a service, whose
/// store's name is L"Service\\Store"; false when there is no such store, as ever outside Windows.
bool ReadCertificateStore(CertificateStores stores, const std::wstring& name,
                          std::vector<CertificateHandle>& certificates);

/// The bytes of a property; text is in UTF-16, little-endian, with its terminating zero. Outside Windows
/// there are the thumbprints (3, 4, 107) and, of a certificate that carries an alias, the friendly name (11).
/// `certificate` came from here.
std::optional<std::string> CertificateProperty(const CERT_CONTEXT& certificate, std::uint64_t id);

/// An encoded name in X.500 form, in the order of the encoding: "C=GB, O=Quillon, CN=host"; its first
/// 2,047 units when it is longer, and nothing when it is malformed.
std::optional<std::wstring> CertificateNameText(const CRYPTOAPI_BLOB& name);

/// What the chain of a certificate is checked against. The certificates came from here, and live as long.
struct ChainQuestion {
    std::vector<const CERT_CONTEXT*> intermediates;
    /// The only ones that are trusted; the system's without a value.
    std::optional<std::vector<const CERT_CONTEXT*>> roots;
    /// A file time (ticks since 1601); now without a value.
    std::optional<std::uint64_t> time;
    /// An extended usage that every certificate below the root must allow; empty for any.
    std::string usage;
    bool checksRevocation = false;
};

struct ChainAnswer {
    std::uint32_t status = 0;  ///< bits of CERT_TRUST_STATUS.dwErrorStatus
    std::vector<CertificateHandle> certificates;
};

/// Builds the chain from the certificate to a root and checks it: signatures, dates, constraints, usage. The
/// answer begins with the certificate itself. Nothing when the system could not do so. Revocation
/// cannot be checked outside Windows and is unknown (0x40) there. Windows may fetch missing
/// intermediates and revocation lists from the network.
std::optional<ChainAnswer> CheckCertificateChain(const CERT_CONTEXT& certificate,
                                                 const ChainQuestion& question);

}  // namespace quillon::platform
