#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/CertificateExtensions.h"
#include "base/Utf.h"
#include "platform/CertificateApi.h"
#include "quillon/CertificateUtils.h"

namespace {

using namespace quillon;

void CheckName(const CRYPTOAPI_BLOB& name) {
    const auto text = platform::CertificateNameText(name);
    if (text && text->size() > 2047) std::abort();
    if (text && !base::WideToUtf8(*text)) std::abort();
}

bool Lies(const CRYPTOAPI_BLOB& part, const CERT_CONTEXT& whole) {
    return part.cbData > whole.cbCertEncoded || (part.cbData > 0 && part.pbData == nullptr);
}

}  // namespace

// The input is a certificate, in DER or PEM, and the encoding of a name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CRYPTOAPI_BLOB blob{};
    blob.cbData = static_cast<std::uint32_t>(size);
    blob.pbData = const_cast<std::uint8_t*>(data);
    CheckName(blob);
    base::ReadCertificateExtensions({reinterpret_cast<const char*>(data), size});

    const auto certificate = platform::ReadCertificate({reinterpret_cast<const char*>(data), size});
    if (!certificate) return 0;
    const CERT_CONTEXT* const context = certificate.Get();
    if (context->cbCertEncoded > size || Lies(context->pCertInfo->SerialNumber, *context)) std::abort();
    CheckName(context->pCertInfo->Subject);
    CheckName(context->pCertInfo->Issuer);
    for (const auto& name :
         base::ReadCertificateExtensions(
             {reinterpret_cast<const char*>(context->pbCertEncoded), context->cbCertEncoded})
             .alternativeNames) {
        const auto* const begin = reinterpret_cast<const std::uint8_t*>(name.content.data());
        if (begin < context->pbCertEncoded ||
            begin + name.content.size() > context->pbCertEncoded + context->cbCertEncoded)
            std::abort();
    }
    const auto digits = CertificateUtils::GetSerialNumberHexString(context).size();
    if (digits != 2 * std::size_t{context->pCertInfo->SerialNumber.cbData}) std::abort();
    for (const unsigned long id : {3UL, 11UL, 107UL}) CertificateUtils::GetContextPropertyString(context, id);
    return 0;
}
