#include "system/Sha256.h"

#include <windows.h>

#include <bcrypt.h>  // after <windows.h>

#include <algorithm>
#include <array>
#include <limits>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

struct AlgorithmCloser {
    void operator()(void* algorithm) const { ::BCryptCloseAlgorithmProvider(algorithm, 0); }
};
struct HashCloser {
    void operator()(void* hash) const { ::BCryptDestroyHash(hash); }
};

}  // namespace

struct Sha256::State {
    std::unique_ptr<void, AlgorithmCloser> algorithm;  // outlives the hash
    std::unique_ptr<void, HashCloser> hash;
    bool isGood = false;
};

Sha256::Sha256() : m_state(std::make_unique<State>()) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    if (::BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0) return;
    m_state->algorithm.reset(algorithm);
    BCRYPT_HASH_HANDLE hash = nullptr;
    if (::BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0) < 0) return;
    m_state->hash.reset(hash);
    m_state->isGood = true;
}

Sha256::~Sha256() = default;

void Sha256::Add(const char* bytes, std::size_t count) {
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    while (count > 0 && m_state->isGood) {
        const std::size_t size = std::min(count, kMost);
        auto* const start = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes));  // it is only read
        m_state->isGood = ::BCryptHashData(m_state->hash.get(), start, static_cast<ULONG>(size), 0) >= 0;
        bytes += size;
        count -= size;
    }
}

std::string Sha256::Finish() {
    std::array<unsigned char, 32> digest{};
    if (!m_state->isGood ||
        ::BCryptFinishHash(m_state->hash.get(), digest.data(), static_cast<ULONG>(digest.size()), 0) < 0)
        return {};
    m_state->isGood = false;
    return StringUtils::ByteArrayToHexString(digest.data(), digest.size());
}

}  // namespace quillon::agent
