#include "platform/CertificateApi.h"
#include "platform/win32/CertificateStore.h"

#include <cstddef>

namespace quillon::platform {

namespace {

struct EngineTraits {
    using Type = HCERTCHAINENGINE;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept {
        const DWORD code = ::GetLastError();
        ::CertFreeCertificateChainEngine(value);
        ::SetLastError(code);
    }
};
struct ChainTraits {
    using Type = PCCERT_CHAIN_CONTEXT;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept {
        const DWORD code = ::GetLastError();
        ::CertFreeCertificateChain(value);
        ::SetLastError(code);
    }
};

/// A store in memory; none when it cannot be made.
StoreHandle StoreOf(const std::vector<const CERT_CONTEXT*>& certificates) {
    StoreHandle store(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    for (const CERT_CONTEXT* const each : certificates) {
        if (!store ||
            ::CertAddCertificateContextToStore(store.Get(), each, CERT_STORE_ADD_ALWAYS, nullptr) == 0)
            return {};
    }
    return store;
}

Handle<EngineTraits> EngineWithRoots(HCERTSTORE roots) {
    CERT_CHAIN_ENGINE_CONFIG config{};
    config.cbSize = offsetof(CERT_CHAIN_ENGINE_CONFIG, dwExclusiveFlags);  // as Windows 7 has it
    config.hExclusiveRoot = roots;
    HCERTCHAINENGINE engine = nullptr;
    return Handle<EngineTraits>(::CertCreateCertificateChainEngine(&config, &engine) == 0 ? nullptr : engine);
}

FILETIME ToFileTime(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::optional<ChainAnswer> AnswerOf(const CERT_CHAIN_CONTEXT& chain) {
    ChainAnswer answer;
    answer.status = chain.TrustStatus.dwErrorStatus;
    if (chain.cChain == 0) return answer;
    const CERT_SIMPLE_CHAIN& first = *chain.rgpChain[0];
    for (DWORD i = 0; i < first.cElement; ++i) {
        answer.certificates.push_back(
            CertificateHandle(::CertDuplicateCertificateContext(first.rgpElement[i]->pCertContext)));
    }
    return answer;
}

}  // namespace

std::optional<ChainAnswer> CheckCertificateChain(const CERT_CONTEXT& certificate,
                                                 const ChainQuestion& question) {
    const StoreHandle intermediates = StoreOf(question.intermediates);
    const StoreHandle roots = StoreOf(question.roots.value_or(std::vector<const CERT_CONTEXT*>{}));
    const Handle<EngineTraits> engine =
        question.roots ? EngineWithRoots(roots.Get()) : Handle<EngineTraits>();
    if (!intermediates || !roots || (question.roots && !engine)) return std::nullopt;
    std::string usage = question.usage;
    LPSTR usages[] = {usage.data()};
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
    parameters.RequestedUsage.Usage.cUsageIdentifier = usage.empty() ? 0 : 1;
    parameters.RequestedUsage.Usage.rgpszUsageIdentifier = usages;
    FILETIME time = ToFileTime(question.time.value_or(0));
    const DWORD flags = question.checksRevocation ? CERT_CHAIN_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT : 0;
    PCCERT_CHAIN_CONTEXT found = nullptr;
    if (::CertGetCertificateChain(engine.Get(), &certificate, question.time ? &time : nullptr,
                                  intermediates.Get(), &parameters, flags, nullptr, &found) == 0) {
        return std::nullopt;
    }
    const Handle<ChainTraits> chain(found);
    return AnswerOf(*chain.Get());
}

}  // namespace quillon::platform
