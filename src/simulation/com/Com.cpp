#include "simulation/com/Com.h"

namespace quillon::simulation {

namespace {

thread_local int references = 0;

constexpr std::int32_t kOk = 0;
constexpr std::int32_t kAlreadyDone = 1;
constexpr auto kTooLate = static_cast<std::int32_t>(0x80010119);

}  // namespace

std::int32_t Com::Initialize() {
    if (const std::int32_t failure = m_initializeFailure.exchange(0); failure != 0) return failure;
    return references++ == 0 ? kOk : kAlreadyDone;
}

void Com::Uninitialize() {
    if (references > 0) --references;
}

std::int32_t Com::InitializeSecurity() {
    ++m_securityCalls;
    if (const std::int32_t failure = m_securityFailure.exchange(0); failure != 0) return failure;
    return m_isSecure.exchange(true) ? kTooLate : kOk;
}

int Com::References() const { return references; }

Com& TheCom() {
    static Com instance;
    return instance;
}

}  // namespace quillon::simulation
