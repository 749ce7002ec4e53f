#include "system/Sha256.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "quillon/StringUtils.h"

namespace quillon::agent {

struct Sha256::State {
    struct Closer {
        void operator()(EVP_MD_CTX* owned) const { ::EVP_MD_CTX_free(owned); }
    };

    std::unique_ptr<EVP_MD_CTX, Closer> context{::EVP_MD_CTX_new()};
    bool isGood = false;
};

Sha256::Sha256() : m_state(std::make_unique<State>()) {
    EVP_MD_CTX* const context = m_state->context.get();
    // Without the memory to begin with, OpenSSL 3.0 would use what it has not made.
    const bool isReady = ::OSSL_LIB_CTX_get0_global_default() != nullptr;
    m_state->isGood =
        isReady && context != nullptr && ::EVP_DigestInit_ex(context, ::EVP_sha256(), nullptr) == 1;
}

Sha256::~Sha256() = default;

void Sha256::Add(const char* bytes, std::size_t count) {
    if (m_state->isGood) m_state->isGood = ::EVP_DigestUpdate(m_state->context.get(), bytes, count) == 1;
}

std::string Sha256::Finish() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (!m_state->isGood || ::EVP_DigestFinal_ex(m_state->context.get(), digest, &size) != 1) return {};
    m_state->isGood = false;
    return StringUtils::ByteArrayToHexString(digest, size);
}

}  // namespace quillon::agent
