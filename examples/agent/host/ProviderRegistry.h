#pragma once

#include <map>
#include <string>

#include "quillon/IProviderRegistry.h"

namespace quillon::agent {

/// The agent's providers, which it does not own. All are added before it is used.
class ProviderRegistry final : public IProviderRegistry {
public:
    void Add(const std::string& name, IProvider& provider) { m_providers[name] = &provider; }

    IProvider* GetProvider(const std::string& name) override;

private:
    std::map<std::string, IProvider*> m_providers;
};

}  // namespace quillon::agent
