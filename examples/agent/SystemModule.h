#pragma once

#include "Module.h"

namespace quillon::agent {

/// Where the agent runs, and what it costs.
class SystemModule final : public IModule {
public:
    SystemModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
