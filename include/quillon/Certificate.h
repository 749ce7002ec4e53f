#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quillon/Export.h"
#include "quillon/TimePoint.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// An X.509 certificate that somebody else wrote: nothing in it is checked but its form. Copies share one
/// context. Any thread; nothing is logged. Paths and texts are UTF-8.
class QUILLON_API Certificate {
public:
    /// The certificate at the beginning of `bytes`, in DER or as a PEM block; nothing when there is none.
    static std::optional<Certificate> Parse(std::string_view bytes);
    /// Appends the certificate in DER, or every one in PEM, of a file of up to 16 MiB. What is in it besides,
    /// or is malformed, is left out. False when it cannot be read.
    static bool ReadFile(const std::string& path, std::vector<Certificate>& certificates);
    /// Appends the certificates of one of the computer's stores, such as L"Root". False when there is no such
    /// store; there are none outside Windows.
    static bool ReadStore(const std::wstring& storeName, std::vector<Certificate>& certificates);

    /// What CertificateUtils takes; lives as long as a copy of this.
    const CERT_CONTEXT* Context() const { return m_context.get(); }
    /// As CertificateUtils::GetCertBlobInfo().
    std::string Subject() const;
    std::string Issuer() const;
    /// Whole seconds; 1601 when it is no date.
    TimePoint NotBefore() const;
    TimePoint NotAfter() const;

private:
    explicit Certificate(std::shared_ptr<const CERT_CONTEXT> context) : m_context(std::move(context)) {}
    static Certificate Share(const CERT_CONTEXT* owned);

    std::shared_ptr<const CERT_CONTEXT> m_context;
};

}  // namespace quillon
