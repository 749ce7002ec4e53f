#pragma once

#include <cstdint>
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

/// Holds one X.509 certificate that comes from outside: only its form is checked, neither signatures
/// nor dates nor trust. Copies share one context. Thread-safe; nothing is logged. Paths and texts are
/// UTF-8.
///
/// @code
/// std::vector<Certificate> certificates;
/// if (Certificate::ReadFile("C:\\certificates\\roots.pem", certificates)) {
///     for (const Certificate& one : certificates) std::cout << one.Subject() << '\n';
/// }
/// @endcode
class QUILLON_API Certificate {
public:
    /// Returns the certificate at the beginning of `bytes`, in DER or as a PEM block; nothing when there
    /// is none.
    [[nodiscard]] static std::optional<Certificate> Parse(std::string_view bytes);
    /// Appends the certificate in DER, or every one in PEM, of a file of up to 16 MiB. Other
    /// content, and what is malformed, is left out. Returns false, and appends nothing, when the file
    /// cannot be read or is larger.
    static bool ReadFile(const std::string& path, std::vector<Certificate>& certificates);
    /// Says whose stores are meant: the computer's, those of the account of the process, or a service's.
    enum class Stores { Computer, User, Service };
    /// Appends the certificates of one of the computer's stores, such as L"Root". Returns false when there is
    /// no such store; there are none outside Windows.
    [[nodiscard]] static bool ReadStore(const std::wstring& storeName,
                                        std::vector<Certificate>& certificates);
    /// Does the same with another's stores; the name of a service's is L"Service\\My".
    [[nodiscard]] static bool ReadStore(Stores stores, const std::wstring& storeName,
                                        std::vector<Certificate>& certificates);

    /// Returns the context for CertificateUtils; it is valid as long as this object or a copy of it.
    const windows::CERT_CONTEXT* Context() const { return m_context.get(); }
    /// Return the names in X.500 form, as CertificateUtils::GetCertBlobInfo() does.
    std::string Subject() const;
    std::string Issuer() const;
    /// Return the limits of validity in whole seconds; 1601-01-01 when the certificate has no date there.
    TimePoint NotBefore() const;
    TimePoint NotAfter() const;

    /// Names a host, a person or a place that the certificate is for, beside its subject.
    struct AlternativeName {
        enum class Kind {
            Dns,  ///< "www.example.org", as it stands: a wildcard is not resolved
            Ip,   ///< "10.0.0.1" or "2001:db8::1"
            Email,
            Uri,
            Directory,  ///< a name in X.500 form
            Other       ///< the bytes in hexadecimal
        };

        Kind kind = Kind::Other;
        std::string value;
    };
    /// Returns the names in the order of the certificate.
    std::vector<AlternativeName> AlternativeNames() const;

    /// Names the uses of the key; the values are those of Windows' CERT_..._KEY_USAGE.
    enum KeyUsageBits : std::uint32_t {
        DigitalSignature = 0x80,
        NonRepudiation = 0x40,
        KeyEncipherment = 0x20,
        DataEncipherment = 0x10,
        KeyAgreement = 0x08,
        KeyCertSign = 0x04,
        CrlSign = 0x02,
        EncipherOnly = 0x01,
        DecipherOnly = 0x8000
    };
    /// Returns the bits; nothing when the certificate names no use, which allows all.
    std::optional<std::uint32_t> KeyUsage() const;
    /// Returns the identifiers of the extended uses, such as "1.3.6.1.5.5.7.3.1"; nothing when the
    /// certificate names none, which allows all.
    std::optional<std::vector<std::string>> ExtendedKeyUsages() const;

private:
    friend class CertificateChain;

    explicit Certificate(std::shared_ptr<const windows::CERT_CONTEXT> context)
        : m_context(std::move(context)) {}
    static Certificate Share(const windows::CERT_CONTEXT* owned);

    std::shared_ptr<const windows::CERT_CONTEXT> m_context;
};

}  // namespace quillon
