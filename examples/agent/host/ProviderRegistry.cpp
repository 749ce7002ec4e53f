#include "host/ProviderRegistry.h"

namespace quillon::agent {

IProvider* ProviderRegistry::GetProvider(const std::string& name) {
    const auto found = m_providers.find(name);
    return found == m_providers.end() ? nullptr : found->second;
}

}  // namespace quillon::agent
