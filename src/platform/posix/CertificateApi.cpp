#include "platform/CertificateApi.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <new>

#include "base/CivilTime.h"
#include "base/Utf.h"
#include "platform/posix/OpenSsl.h"

namespace quillon::platform {

namespace {

using X509Pointer = OpenSslPointer<X509, ::X509_free>;

/// A context with all that it points to.
struct OwnedCertificate : CERT_CONTEXT {
    CERT_INFO info{};
    std::string encoded;
    std::string serialNumber;
    std::string issuer;
    std::string subject;
    std::string friendlyName;  ///< as the property; empty when there is none
};

/// Without this function OpenSSL asks on the terminal for the password of an encrypted PEM block.
int RefusePassword(char*, int, int, void*) { return -1; }

/// The bytes in a PEM block; empty when it holds no certificate.
std::string DecodePem(std::string_view block) {
    if (block.size() > std::numeric_limits<int>::max()) return {};
    const OpenSslPointer<BIO, ::BIO_free> input(
        ::BIO_new_mem_buf(block.data(), static_cast<int>(block.size())));
    unsigned char* bytes = nullptr;
    long size = 0;
    if (input == nullptr || ::PEM_bytes_read_bio(&bytes, &size, nullptr, PEM_STRING_X509_TRUSTED, input.get(),
                                                 &RefusePassword, nullptr) == 0) {
        return {};
    }
    const OpenSslPointer<unsigned char, FreeOpenSslMemory> owner(bytes);
    return std::string(AsText(bytes, static_cast<std::size_t>(size)));
}

/// What cannot be read for want of memory is not malformed.
void ThrowIfWithoutMemory() {
    if (ERR_GET_REASON(::ERR_peek_error()) == ERR_R_MALLOC_FAILURE) throw std::bad_alloc();
}

/// Reads the certificate at the front of `bytes`, which then are its encoding alone.
X509Pointer Parse(std::string_view& bytes) {
    const unsigned char* end = AsBytes(bytes);
    ::ERR_clear_error();
    X509Pointer certificate(::d2i_X509(nullptr, &end, static_cast<long>(bytes.size())));
    if (certificate == nullptr) {
        ThrowIfWithoutMemory();
        return {};
    }
    const std::string_view all = bytes;
    bytes = all.substr(0, static_cast<std::size_t>(end - AsBytes(bytes)));
    if (bytes.size() == all.size()) return certificate;
    // The further data may be that of OpenSSL's trusted certificates.
    const unsigned char* at = AsBytes(all);
    X509Pointer trusted(::d2i_X509_AUX(nullptr, &at, static_cast<long>(all.size())));
    return trusted != nullptr ? std::move(trusted) : std::move(certificate);
}

template <class Object, class Encode>
std::string EncodingOf(const Object* object, Encode encode) {
    unsigned char* bytes = nullptr;
    const int size = encode(object, &bytes);
    const OpenSslPointer<unsigned char, FreeOpenSslMemory> owner(bytes);
    return size > 0 ? std::string(AsText(bytes, static_cast<std::size_t>(size))) : std::string();
}

/// Least significant byte first, with the zero that a positive number may begin with.
std::string SerialNumberOf(const X509* certificate) {
    const std::string encoded = EncodingOf(::X509_get0_serialNumber(certificate), ::i2d_ASN1_INTEGER);
    const unsigned char* content = AsBytes(encoded);
    long size = 0;
    int tag = 0;
    int tagClass = 0;
    ::ASN1_get_object(&content, &size, &tag, &tagClass, static_cast<long>(encoded.size()));
    std::string bytes(AsText(content, static_cast<std::size_t>(size)));
    std::ranges::reverse(bytes);
    return bytes;
}

std::string FriendlyNameOf(X509* certificate) {
    int size = 0;
    const unsigned char* const alias = ::X509_alias_get0(certificate, &size);
    if (alias == nullptr) return {};
    const std::string text = base::RepairUtf8(AsText(alias, static_cast<std::size_t>(size)));
    return base::Utf8ToUtf16Bytes(text + '\0', false).value_or("");
}

/// 1601 for what is no date.
FILETIME FileTimeOf(const ASN1_TIME* time) {
    std::tm utc{};
    if (::ASN1_TIME_to_tm(time, &utc) == 0) return {};
    constexpr std::int64_t kDaysTo1970 = 134'774;
    const std::int64_t days =
        base::DaysFromCivil(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday) + kDaysTo1970;
    const std::int64_t seconds =
        days * base::kSecondsPerDay + utc.tm_hour * 3600 + utc.tm_min * 60 + utc.tm_sec;
    const auto ticks = static_cast<std::uint64_t>(std::max<std::int64_t>(seconds, 0) * base::kTicksPerSecond);
    return {static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)};
}

CRYPTOAPI_BLOB BlobOf(std::string& bytes) {
    return {static_cast<std::uint32_t>(bytes.size()), reinterpret_cast<std::uint8_t*>(bytes.data())};
}

std::unique_ptr<OwnedCertificate> MakeContext(X509& certificate, std::string_view encoded) {
    auto context = std::make_unique<OwnedCertificate>();
    context->encoded = encoded;
    context->serialNumber = SerialNumberOf(&certificate);
    context->issuer = EncodingOf(::X509_get_issuer_name(&certificate), ::i2d_X509_NAME);
    context->subject = EncodingOf(::X509_get_subject_name(&certificate), ::i2d_X509_NAME);
    context->friendlyName = FriendlyNameOf(&certificate);
    context->info = {BlobOf(context->serialNumber), BlobOf(context->issuer), BlobOf(context->subject),
                     FileTimeOf(::X509_get0_notBefore(&certificate)),
                     FileTimeOf(::X509_get0_notAfter(&certificate))};
    const CRYPTOAPI_BLOB all = BlobOf(context->encoded);
    static_cast<CERT_CONTEXT&>(*context) = {1, all.pbData, all.cbData, &context->info};
    return context;
}

std::optional<std::string> Digest(const CERT_CONTEXT& certificate, const EVP_MD* algorithm) {
    const OpenSslErrors errors;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (::EVP_Digest(certificate.pbCertEncoded, certificate.cbCertEncoded, digest, &size, algorithm,
                     nullptr) == 0) {
        return std::nullopt;
    }
    return std::string(AsText(digest, size));
}

}  // namespace

void CertificateTraits::Close(Type value) noexcept { delete static_cast<const OwnedCertificate*>(value); }

CertificateHandle ReadCertificate(std::string_view bytes) {
    const OpenSslErrors errors;
    const std::string decoded = bytes.starts_with("-----BEGIN") ? DecodePem(bytes) : std::string();
    std::string_view encoded = decoded.empty() ? bytes : decoded;
    const X509Pointer certificate = Parse(encoded);
    if (certificate == nullptr) return {};
    return CertificateHandle(MakeContext(*certificate, encoded).release());
}

bool ReadCertificateStore(CertificateStores, const std::wstring&, std::vector<CertificateHandle>&) {
    return false;
}

std::optional<std::string> CertificateProperty(const CERT_CONTEXT& certificate, std::uint64_t id) {
    switch (id) {
        case 3:
            return Digest(certificate, ::EVP_sha1());
        case 4:
            return Digest(certificate, ::EVP_md5());
        case 107:
            return Digest(certificate, ::EVP_sha256());
        case 11: {
            const std::string& name = static_cast<const OwnedCertificate&>(certificate).friendlyName;
            return name.empty() ? std::nullopt : std::optional(name);
        }
        default:
            return std::nullopt;
    }
}

}  // namespace quillon::platform
