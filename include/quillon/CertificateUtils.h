#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Returns properties of certificates as text (UTF-8), and names the system's stores. Thread-safe;
/// nothing is logged or thrown, and a failure, a null certificate included, is an empty text. The
/// certificate stays the caller's: Certificate::Context() is one. Outside Windows a CERT_CONTEXT holds a
/// certificate in DER (quillon/WindowsTypes.h).
///
/// @code
/// void PrintThumbprint(const Certificate& certificate) {
///     const unsigned long kSha1 = 3;  // CERT_SHA1_HASH_PROP_ID
///     std::cout << CertificateUtils::GetContextPropertyHash(certificate.Context(), kSha1) << '\n';
/// }
/// @endcode
class QUILLON_API CertificateUtils {
public:
    CertificateUtils() = delete;

    /// Returns a text property such as 11, CERT_FRIENDLY_NAME_PROP_ID: every code unit that the system
    /// returns, including the terminating NUL.
    static std::string GetContextPropertyString(const windows::CERT_CONTEXT* const& certificate,
                                                const unsigned long& propertyId);
    /// Returns the bytes of a property in hexadecimal, as StringUtils::ByteArrayToHexString() does, such
    /// as 3, CERT_SHA1_HASH_PROP_ID, or 107, CERT_SHA256_HASH_PROP_ID.
    static std::string GetContextPropertyHash(const windows::CERT_CONTEXT* const& certificate,
                                              const unsigned long& propertyId);
    /// Returns an encoded name in X.500 form, "C=..., O=..., CN=...".
    static std::string GetCertBlobInfo(windows::CRYPTOAPI_BLOB encodedName);
    /// Returns the serial number in lower-case hexadecimal, most significant byte first.
    static std::string GetSerialNumberHexString(const windows::CERT_CONTEXT* const& certificate);

    /// Returns the name for people of one of the nine stores below; the store's name is
    /// case-insensitive.
    static std::string GetFriendlyNameFromStoreName(std::wstring storeName);
    /// Returns the store of the first name in the list that stands anywhere in the text.
    static std::wstring GetStoreNameFromFriendlyName(const std::string& friendlyName);
    /// Return the nine names in the same order. The lists are never destroyed.
    static const std::vector<std::wstring>& GetAvailableStoreNames();
    static const std::vector<std::wstring>& GetAvailableFriendlyNames();
};

}  // namespace quillon
