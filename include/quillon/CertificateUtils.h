#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Properties of certificates as text (UTF-8), and the names of the system's stores.
/// Any thread; nothing is logged, a failure is an empty text. Outside Windows a
/// CERT_CONTEXT holds a certificate in DER (quillon/WindowsTypes.h).
class QUILLON_API CertificateUtils {
public:
    CertificateUtils() = delete;

    /// A text property such as 11, the friendly name; every unit that the system gives, the
    /// terminating zero with them.
    static std::string GetContextPropertyString(const CERT_CONTEXT* const& certificate,
                                                const unsigned long& propertyId);
    /// The bytes of a property such as 3, the SHA-1 thumbprint, or 107, that of SHA-256, in hexadecimal.
    static std::string GetContextPropertyHash(const CERT_CONTEXT* const& certificate,
                                              const unsigned long& propertyId);
    /// An encoded name in X.500 form, "C=..., O=..., CN=...".
    static std::string GetCertBlobInfo(CRYPTOAPI_BLOB encodedName);
    /// Most significant byte first, in lower case.
    static std::string GetSerialNumberHexString(const CERT_CONTEXT* const& certificate);

    /// Whatever the case of the store's name.
    static std::string GetFriendlyNameFromStoreName(std::wstring storeName);
    /// Of the first friendly name that stands anywhere in the text.
    static std::wstring GetStoreNameFromFriendlyName(const std::string& friendlyName);
    /// Both lists have the same order.
    static const std::vector<std::wstring>& GetAvailableStoreNames();
    static const std::vector<std::wstring>& GetAvailableFriendlyNames();
};

}  // namespace quillon
