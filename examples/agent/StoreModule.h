#pragma once

#include "Module.h"

namespace quillon::agent {

/// Keeps tables in the agent's databases between invocations.
class StoreModule final : public IModule {
public:
    StoreModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
