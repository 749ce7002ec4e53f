#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>

#include "base/CertificateExtensions.h"
#include "platform/CertificateApi.h"
#include "platform/posix/OpenSsl.h"

namespace quillon::platform {

namespace {

using X509Pointer = OpenSslPointer<X509, ::X509_free>;

/// Bits of CERT_TRUST_STATUS.dwErrorStatus.
constexpr std::uint32_t kNotTimeValid = 0x1, kRevoked = 0x4, kNotSignatureValid = 0x8,
                        kNotValidForUsage = 0x10, kUntrustedRoot = 0x20, kRevocationUnknown = 0x40,
                        kInvalidExtension = 0x100, kInvalidPolicyConstraints = 0x200,
                        kInvalidBasicConstraints = 0x400, kInvalidNameConstraints = 0x800,
                        kPartialChain = 0x10000, kWeakSignature = 0x100000, kExplicitDistrust = 0x4000000;

std::uint32_t StatusOf(int error) {
    switch (error) {
        case X509_V_ERR_CERT_NOT_YET_VALID:
        case X509_V_ERR_CERT_HAS_EXPIRED:
        case X509_V_ERR_ERROR_IN_CERT_NOT_BEFORE_FIELD:
        case X509_V_ERR_ERROR_IN_CERT_NOT_AFTER_FIELD:
            return kNotTimeValid;
        case X509_V_ERR_CERT_REVOKED:
            return kRevoked;
        case X509_V_ERR_CERT_SIGNATURE_FAILURE:
        case X509_V_ERR_UNABLE_TO_DECRYPT_CERT_SIGNATURE:
        case X509_V_ERR_UNABLE_TO_DECODE_ISSUER_PUBLIC_KEY:
            return kNotSignatureValid;
        case X509_V_ERR_INVALID_PURPOSE:
        case X509_V_ERR_KEYUSAGE_NO_CERTSIGN:
        case X509_V_ERR_KEYUSAGE_NO_DIGITAL_SIGNATURE:
            return kNotValidForUsage;
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_CERT_UNTRUSTED:
            return kUntrustedRoot;
        case X509_V_ERR_CERT_REJECTED:
            return kExplicitDistrust;
        case X509_V_ERR_INVALID_CA:
        case X509_V_ERR_PATH_LENGTH_EXCEEDED:
            return kInvalidBasicConstraints;
        case X509_V_ERR_PERMITTED_VIOLATION:
        case X509_V_ERR_EXCLUDED_VIOLATION:
        case X509_V_ERR_UNSUPPORTED_NAME_SYNTAX:
        case X509_V_ERR_UNSUPPORTED_CONSTRAINT_TYPE:
        case X509_V_ERR_UNSUPPORTED_CONSTRAINT_SYNTAX:
            return kInvalidNameConstraints;
        case X509_V_ERR_INVALID_POLICY_EXTENSION:
        case X509_V_ERR_NO_EXPLICIT_POLICY:
            return kInvalidPolicyConstraints;
        case X509_V_ERR_INVALID_EXTENSION:
        case X509_V_ERR_UNHANDLED_CRITICAL_EXTENSION:
            return kInvalidExtension;
        case X509_V_ERR_EE_KEY_TOO_SMALL:
        case X509_V_ERR_CA_KEY_TOO_SMALL:
        case X509_V_ERR_CA_MD_TOO_WEAK:
            return kWeakSignature;
        default:  // an issuer that is missing, and what else leaves the chain without a proof
            return kPartialChain;
    }
}

/// Notes the error and goes on, so that the status tells all of them.
int NoteError(int isGood, X509_STORE_CTX* context) {
    if (isGood == 1) return 1;
    auto& status = *static_cast<std::uint32_t*>(::X509_STORE_CTX_get_app_data(context));
    status |= StatusOf(::X509_STORE_CTX_get_error(context));
    return 1;
}

X509Pointer ToX509(const CERT_CONTEXT& certificate) {
    const unsigned char* at = certificate.pbCertEncoded;
    return X509Pointer(::d2i_X509(nullptr, &at, static_cast<long>(certificate.cbCertEncoded)));
}

void FreeStack(STACK_OF(X509) * stack) { sk_X509_free(stack); }

bool FillStore(const ChainQuestion& question, X509_STORE& store) {
    if (!question.roots) return ::X509_STORE_set_default_paths(&store) == 1;
    return std::ranges::all_of(*question.roots, [&store](const CERT_CONTEXT* root) {
        const X509Pointer certificate = ToX509(*root);
        return certificate != nullptr && ::X509_STORE_add_cert(&store, certificate.get()) == 1;
    });
}

std::string_view EncodingOf(const CERT_CONTEXT& certificate) {
    return AsText(certificate.pbCertEncoded, certificate.cbCertEncoded);
}

/// Whether a certificate allows a usage; one that names none allows any.
bool Allows(const CERT_CONTEXT& certificate, const std::string& usage) {
    constexpr const char* kAnyUsage = "2.5.29.37.0";
    const auto usages = base::ReadCertificateExtensions(EncodingOf(certificate)).usages;
    return !usages || std::ranges::find(*usages, usage) != usages->end() ||
           std::ranges::find(*usages, kAnyUsage) != usages->end();
}

bool ReadChain(X509_STORE_CTX& context, ChainAnswer& answer) {
    const STACK_OF(X509)* const chain = ::X509_STORE_CTX_get0_chain(&context);
    for (int i = 0; i < sk_X509_num(chain); ++i) {
        unsigned char* bytes = nullptr;
        const int size = ::i2d_X509(sk_X509_value(chain, i), &bytes);
        const OpenSslPointer<unsigned char, FreeOpenSslMemory> owner(bytes);
        if (size <= 0) return false;
        answer.certificates.push_back(ReadCertificate(AsText(bytes, static_cast<std::size_t>(size))));
        if (!answer.certificates.back()) return false;
    }
    return true;
}

/// The root's own usages do not count.
void CheckUsage(const ChainQuestion& question, ChainAnswer& answer) {
    if (question.usage.empty()) return;
    for (std::size_t i = 0; i < answer.certificates.size(); ++i) {
        const bool isRoot = i > 0 && i + 1 == answer.certificates.size();
        if (!isRoot && !Allows(*answer.certificates[i].Get(), question.usage))
            answer.status |= kNotValidForUsage;
    }
}

std::time_t ToSeconds(std::uint64_t fileTime) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000, kSecondsTo1970 = 11'644'473'600;
    return static_cast<std::time_t>(static_cast<std::int64_t>(fileTime / kTicksPerSecond) - kSecondsTo1970);
}

}  // namespace

std::optional<ChainAnswer> CheckCertificateChain(const CERT_CONTEXT& certificate,
                                                 const ChainQuestion& question) {
    const OpenSslErrors errors;
    const OpenSslPointer<X509_STORE, ::X509_STORE_free> store(::X509_STORE_new());
    const OpenSslPointer<X509_STORE_CTX, ::X509_STORE_CTX_free> context(::X509_STORE_CTX_new());
    const X509Pointer leaf = ToX509(certificate);
    std::vector<X509Pointer> owned;
    const OpenSslPointer<STACK_OF(X509), FreeStack> intermediates(sk_X509_new_null());
    if (!store || !context || !leaf || !intermediates || !FillStore(question, *store)) return std::nullopt;
    for (const CERT_CONTEXT* const each : question.intermediates) {
        owned.push_back(ToX509(*each));
        if (owned.back() == nullptr || sk_X509_push(intermediates.get(), owned.back().get()) == 0)
            return std::nullopt;
    }
    ChainAnswer answer;
    if (::X509_STORE_CTX_init(context.get(), store.get(), leaf.get(), intermediates.get()) != 1)
        return std::nullopt;
    ::X509_STORE_CTX_set_app_data(context.get(), &answer.status);
    ::X509_STORE_CTX_set_verify_cb(context.get(), &NoteError);
    if (question.time) ::X509_STORE_CTX_set_time(context.get(), 0, ToSeconds(*question.time));
    const int result = ::X509_verify_cert(context.get());
    if (result < 0 || !ReadChain(*context, answer)) return std::nullopt;
    if (result == 0 && answer.status == 0) answer.status = kPartialChain;  // never take a failure for trust
    CheckUsage(question, answer);
    if (question.checksRevocation) answer.status |= kRevocationUnknown;
    return answer;
}

}  // namespace quillon::platform
