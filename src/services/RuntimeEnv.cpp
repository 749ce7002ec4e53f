#include "quillon/RuntimeEnv.h"

#include <mutex>
#include <utility>

namespace quillon {

namespace {

std::mutex& InstanceMutex() {
    static std::mutex mutex;
    return mutex;
}

}  // namespace

RuntimeEnv* RuntimeEnv::m_pUniqueInstance = nullptr;

IRuntimeEnv::~IRuntimeEnv() = default;
bool IRuntimeEnv::IsInitialized() const { return m_type != NotSet; }
void IRuntimeEnv::setEnvType(EnvType type) { m_type = type; }
IRuntimeEnv::EnvType IRuntimeEnv::getEnvType() { return m_type; }
bool IRuntimeEnv::IsAgentEngineEnv() const { return m_type == AgentEngine || m_type == AgentSubEngine; }

IRuntimeEnv* RuntimeEnv::GetInstance() {
    const std::lock_guard lock(InstanceMutex());
    if (m_pUniqueInstance == nullptr) m_pUniqueInstance = new RuntimeEnv;
    return m_pUniqueInstance;
}

void RuntimeEnv::ReleaseInstance() {
    const std::lock_guard lock(InstanceMutex());
    delete std::exchange(m_pUniqueInstance, nullptr);
}

bool RuntimeEnv::HaveInstance() {
    const std::lock_guard lock(InstanceMutex());
    return m_pUniqueInstance != nullptr;
}

RuntimeEnv::~RuntimeEnv() = default;
void RuntimeEnv::SetTesting() { m_testing = true; }
bool RuntimeEnv::IsTesting() const { return m_testing; }

}  // namespace quillon
