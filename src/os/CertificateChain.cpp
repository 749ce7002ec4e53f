#include "quillon/CertificateChain.h"

#include <utility>

#include "platform/CertificateApi.h"
#include "quillon/ErrorHelper.h"

namespace quillon {

namespace {

constexpr std::uint32_t kPartialChain = 0x10000;

constexpr std::pair<std::uint32_t, const char*> kNames[] = {
    {0x1, "CERT_TRUST_IS_NOT_TIME_VALID"},
    {0x2, "CERT_TRUST_IS_NOT_TIME_NESTED"},
    {0x4, "CERT_TRUST_IS_REVOKED"},
    {0x8, "CERT_TRUST_IS_NOT_SIGNATURE_VALID"},
    {0x10, "CERT_TRUST_IS_NOT_VALID_FOR_USAGE"},
    {0x20, "CERT_TRUST_IS_UNTRUSTED_ROOT"},
    {0x40, "CERT_TRUST_REVOCATION_STATUS_UNKNOWN"},
    {0x80, "CERT_TRUST_IS_CYCLIC"},
    {0x100, "CERT_TRUST_INVALID_EXTENSION"},
    {0x200, "CERT_TRUST_INVALID_POLICY_CONSTRAINTS"},
    {0x400, "CERT_TRUST_INVALID_BASIC_CONSTRAINTS"},
    {0x800, "CERT_TRUST_INVALID_NAME_CONSTRAINTS"},
    {0x1000, "CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT"},
    {0x2000, "CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT"},
    {0x4000, "CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT"},
    {0x8000, "CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT"},
    {0x10000, "CERT_TRUST_IS_PARTIAL_CHAIN"},
    {0x100000, "CERT_TRUST_HAS_WEAK_SIGNATURE"},
    {0x1000000, "CERT_TRUST_IS_OFFLINE_REVOCATION"},
    {0x2000000, "CERT_TRUST_NO_ISSUANCE_CHAIN_POLICY"},
    {0x4000000, "CERT_TRUST_IS_EXPLICIT_DISTRUST"},
    {0x8000000, "CERT_TRUST_HAS_NOT_SUPPORTED_CRITICAL_EXT"},
};

std::vector<const CERT_CONTEXT*> ContextsOf(const std::vector<Certificate>& certificates) {
    std::vector<const CERT_CONTEXT*> contexts;
    for (const Certificate& each : certificates) contexts.push_back(each.Context());
    return contexts;
}

/// Ticks since 1601; a time before is 0.
std::uint64_t FileTimeOf(TimePoint time) {
    constexpr std::int64_t kTicksTo1970 = 116'444'736'000'000'000;
    const std::int64_t ticks = time.time_since_epoch().count();
    return ticks < -kTicksTo1970 ? 0 : static_cast<std::uint64_t>(ticks) + kTicksTo1970;
}

platform::ChainQuestion QuestionOf(const CertificateChainOptions& options) {
    platform::ChainQuestion question;
    question.intermediates = ContextsOf(options.intermediates);
    if (options.roots) question.roots = ContextsOf(*options.roots);
    if (options.time) question.time = FileTimeOf(*options.time);
    question.usage = options.usage;
    question.checksRevocation = options.checksRevocation;
    return question;
}

}  // namespace

CertificateChain CertificateChain::Check(const Certificate& certificate,
                                         const CertificateChainOptions& options) {
    CertificateChain chain;
    auto answer = platform::CheckCertificateChain(*certificate.Context(), QuestionOf(options));
    chain.m_status = answer ? answer->status : kPartialChain;
    if (!answer) return chain;
    for (auto& each : answer->certificates)
        chain.m_certificates.push_back(Certificate::Share(each.Release()));
    return chain;
}

std::string CertificateChain::StatusText() const {
    std::string text;
    for (const auto& [bit, name] : kNames) {
        if ((m_status & bit) == 0) continue;
        if (!text.empty()) text += ", ";
        text += name;
    }
    return text;
}

bool CertificateChain::IsTrusted(IAgentConfiguration::CRLChecks crlChecks) const {
    for (std::uint32_t left = m_status; left != 0; left &= left - 1) {
        const std::uint32_t lowest = left & (~left + 1);
        if (!ErrorHelper::AllowTrustError(crlChecks, lowest)) return false;
    }
    return true;
}

}  // namespace quillon
