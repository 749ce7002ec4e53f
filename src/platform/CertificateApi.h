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
/// Appends the certificates of one of the computer's stores; false when there is no such store, as
/// ever outside Windows.
bool ReadCertificateStore(const std::wstring& name, std::vector<CertificateHandle>& certificates);

/// The bytes of a property; text is in UTF-16, little-endian, with its terminating zero. Outside Windows
/// there are the thumbprints (3, 4, 107) and, of a certificate that carries an alias, the friendly name (11).
/// `certificate` came from here.
std::optional<std::string> CertificateProperty(const CERT_CONTEXT& certificate, std::uint64_t id);

/// An encoded name in X.500 form, in the order of the encoding: "C=GB, O=Quillon, CN=host"; its first
/// 2,047 units when it is longer, and nothing when it is malformed.
std::optional<std::wstring> CertificateNameText(const CRYPTOAPI_BLOB& name);

}  // namespace quillon::platform
