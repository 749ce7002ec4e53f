#include "platform/CertificateApi.h"

#include "platform/win32/CertificateStore.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

namespace {

DWORD LocationOf(CertificateStores stores) {
    switch (stores) {
        case CertificateStores::User:
            return CERT_SYSTEM_STORE_CURRENT_USER;
        case CertificateStores::Service:
            return CERT_SYSTEM_STORE_SERVICES;
        default:
            return CERT_SYSTEM_STORE_LOCAL_MACHINE;
    }
}

StoreHandle OpenStore(CertificateStores stores, const std::wstring& name) {
    return StoreHandle(::CertOpenStore(
        CERT_STORE_PROV_SYSTEM_W, 0, 0,
        LocationOf(stores) | CERT_STORE_OPEN_EXISTING_FLAG | CERT_STORE_READONLY_FLAG, name.c_str()));
}

/// Returns the length with the terminating NUL; 0 when the name cannot be decoded.
DWORD ConvertName(const CRYPTOAPI_BLOB& name, wchar_t* buffer, DWORD size) {
    CRYPTOAPI_BLOB copy = name;
    return ::CertNameToStrW(X509_ASN_ENCODING, &copy, CERT_X500_NAME_STR, buffer, size);
}

}  // namespace

void CertificateTraits::Close(Type value) noexcept {
    const DWORD code = ::GetLastError();
    ::CertFreeCertificateContext(value);
    ::SetLastError(code);
}

CertificateHandle ReadCertificate(std::string_view bytes) {
    CRYPTOAPI_BLOB blob{};
    blob.cbData = static_cast<DWORD>(bytes.size());
    blob.pbData = reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()));
    const void* context = nullptr;
    if (::CryptQueryObject(CERT_QUERY_OBJECT_BLOB, &blob, CERT_QUERY_CONTENT_FLAG_CERT,
                           CERT_QUERY_FORMAT_FLAG_BINARY | CERT_QUERY_FORMAT_FLAG_BASE64_ENCODED, 0, nullptr,
                           nullptr, nullptr, nullptr, nullptr, &context) == 0) {
        return {};
    }
    return CertificateHandle(static_cast<const CERT_CONTEXT*>(context));
}

bool ReadCertificateStore(CertificateStores stores, const std::wstring& name,
                          std::vector<CertificateHandle>& certificates) {
    const StoreHandle store = OpenStore(stores, name);
    if (!store) return false;
    CertificateHandle next;
    // The enumeration frees what it is given.
    while ((next = CertificateHandle(::CertEnumCertificatesInStore(store.Get(), next.Release()))))
        certificates.push_back(CertificateHandle(::CertDuplicateCertificateContext(next.Get())));
    return true;
}

std::optional<std::string> CertificateProperty(const CERT_CONTEXT& certificate, std::uint64_t id) {
    const auto property = static_cast<DWORD>(id);
    DWORD size = 0;
    if (::CertGetCertificateContextProperty(&certificate, property, nullptr, &size) == 0) return std::nullopt;
    std::string bytes(size, '\0');
    if (::CertGetCertificateContextProperty(&certificate, property, bytes.data(), &size) == 0)
        return std::nullopt;
    bytes.resize(size);
    return bytes;
}

std::optional<std::wstring> CertificateNameText(const CRYPTOAPI_BLOB& name) {
    constexpr DWORD kRoom = 2048;
    wchar_t buffer[kRoom] = {};
    if (ConvertName(name, nullptr, 0) == 0 || ConvertName(name, buffer, kRoom) == 0) return std::nullopt;
    std::wstring text(buffer, std::char_traits<wchar_t>::length(buffer));
    if (!text.empty() && IS_HIGH_SURROGATE(text.back())) text.pop_back();  // where it was cut
    return text;
}

}  // namespace quillon::platform
