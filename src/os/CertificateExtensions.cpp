#include <algorithm>

#include "base/CertificateExtensions.h"
#include "base/IpAddress.h"
#include "base/Utf.h"
#include "platform/CertificateApi.h"
#include "quillon/Certificate.h"
#include "quillon/CertificateUtils.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using Name = Certificate::AlternativeName;

std::string_view EncodingOf(const CERT_CONTEXT& certificate) {
    return {reinterpret_cast<const char*>(certificate.pbCertEncoded), certificate.cbCertEncoded};
}

std::string Hexadecimal(std::string_view bytes) {
    return StringUtils::ByteArrayToHexString(reinterpret_cast<const unsigned char*>(bytes.data()),
                                             bytes.size());
}

/// Empty when it is no address.
std::string AddressText(std::string_view bytes) {
    base::IpAddress address;
    if (bytes.size() != base::IpAddress::kIpv4Size && bytes.size() != base::IpAddress::kIpv6Size) return {};
    std::ranges::copy(bytes, address.bytes.begin());
    address.size = bytes.size();
    return base::IpAddressText(address);
}

std::string DirectoryText(std::string_view name) {
    std::string copy(name);
    CRYPTOAPI_BLOB blob{};
    blob.cbData = static_cast<std::uint32_t>(copy.size());
    blob.pbData = reinterpret_cast<std::uint8_t*>(copy.data());
    return CertificateUtils::GetCertBlobInfo(blob);
}

Name ToName(const base::CertificateExtensions::Name& name) {
    const auto text = [&name] { return base::RepairUtf8(name.content); };
    Name made;
    switch (name.kind) {
        case 1:
            made = {Name::Kind::Email, text()};
            break;
        case 2:
            made = {Name::Kind::Dns, text()};
            break;
        case 4:
            made = {Name::Kind::Directory, DirectoryText(name.content)};
            break;
        case 6:
            made = {Name::Kind::Uri, text()};
            break;
        case 7:
            made = {Name::Kind::Ip, AddressText(name.content)};
            break;
        default:
            break;
    }
    return made.value.empty() ? Name{Name::Kind::Other, Hexadecimal(name.content)} : made;
}

}  // namespace

std::vector<Name> Certificate::AlternativeNames() const {
    std::vector<Name> names;
    for (const auto& name : base::ReadCertificateExtensions(EncodingOf(*m_context)).alternativeNames)
        names.push_back(ToName(name));
    return names;
}

std::optional<std::uint32_t> Certificate::KeyUsage() const {
    return base::ReadCertificateExtensions(EncodingOf(*m_context)).keyUsage;
}

std::optional<std::vector<std::string>> Certificate::ExtendedKeyUsages() const {
    return base::ReadCertificateExtensions(EncodingOf(*m_context)).usages;
}

}  // namespace quillon
