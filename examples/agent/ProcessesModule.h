#pragma once

#include "Module.h"

namespace quillon::agent {

/// Lists the system's processes. What the agent may not read of a process is null.
class ProcessesModule final : public IModule {
public:
    ProcessesModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
