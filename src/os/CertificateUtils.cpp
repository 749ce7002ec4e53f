#include "quillon/CertificateUtils.h"

#include <cstddef>

#include "base/Characters.h"
#include "base/HexDigits.h"
#include "base/Utf.h"
#include "platform/CertificateApi.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

std::optional<std::string> PropertyOf(const CERT_CONTEXT* certificate, unsigned long id) {
    return certificate != nullptr ? platform::CertificateProperty(*certificate, id) : std::nullopt;
}

/// Joins each two bytes to a code unit, the low one first; an odd last byte is left out.
std::wstring UnitsOf(const std::string& bytes) {
    std::wstring units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const auto low = static_cast<unsigned char>(bytes[at]);
        const auto high = static_cast<unsigned char>(bytes[at + 1]);
        units.push_back(static_cast<wchar_t>(high << 8 | low));
    }
    return units;
}

}  // namespace

std::string CertificateUtils::GetContextPropertyString(const CERT_CONTEXT* const& certificate,
                                                       const unsigned long& propertyId) {
    const auto bytes = PropertyOf(certificate, propertyId);
    return bytes ? base::WideToUtf8(UnitsOf(*bytes)).value_or("") : "";
}

std::string CertificateUtils::GetContextPropertyHash(const CERT_CONTEXT* const& certificate,
                                                     const unsigned long& propertyId) {
    const std::string bytes = PropertyOf(certificate, propertyId).value_or("");
    return StringUtils::ByteArrayToHexString(reinterpret_cast<const unsigned char*>(bytes.data()),
                                             bytes.size());
}

std::string CertificateUtils::GetCertBlobInfo(CRYPTOAPI_BLOB encodedName) {
    const auto text = platform::CertificateNameText(encodedName);
    return text ? base::WideToUtf8(*text).value_or("") : "";
}

std::string CertificateUtils::GetSerialNumberHexString(const CERT_CONTEXT* const& certificate) {
    if (certificate == nullptr) return {};
    const auto& serial = certificate->pCertInfo->SerialNumber;
    std::string text;
    for (std::size_t left = serial.cbData; left > 0; --left) {
        const unsigned char byte = serial.pbData[left - 1];
        text += {base::kLowerDigits[byte >> 4], base::kLowerDigits[byte & 0xF]};
    }
    return text;
}

std::string CertificateUtils::GetFriendlyNameFromStoreName(std::wstring storeName) {
    const auto& names = GetAvailableStoreNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (base::EqualIgnoringCase<wchar_t>(names[i], storeName))
            return base::ToUtf8(GetAvailableFriendlyNames()[i]);
    }
    return {};
}

std::wstring CertificateUtils::GetStoreNameFromFriendlyName(const std::string& friendlyName) {
    const auto& names = GetAvailableFriendlyNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (friendlyName.find(base::ToUtf8(names[i])) != std::string::npos)
            return GetAvailableStoreNames()[i];
    }
    return {};
}

const std::vector<std::wstring>& CertificateUtils::GetAvailableStoreNames() {
    static const auto& names =
        *new std::vector<std::wstring>{L"My",        L"CA",          L"Root",          L"AuthRoot",
                                       L"Trust",     L"AddressBook", L"TrustedPeople", L"TrustedPublisher",
                                       L"Disallowed"};
    return names;
}

const std::vector<std::wstring>& CertificateUtils::GetAvailableFriendlyNames() {
    // The last one is spelled as the agent has always spelled it.
    static const auto& names = *new std::vector<std::wstring>{L"Personal",
                                                              L"Intermediate Certification Authorities",
                                                              L"Trusted Root Certification Authorities",
                                                              L"Third-Party Certification Authorities",
                                                              L"Enterprise Trust",
                                                              L"Other People",
                                                              L"Trusted People",
                                                              L"Trusted Publisher",
                                                              L"Untrusted Certficates"};
    return names;
}

}  // namespace quillon
