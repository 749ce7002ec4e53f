#pragma once

#include "Module.h"

namespace quillon::agent {

/// Runs command lines. A command that does not end with exit code 0 is a failed
/// invocation (code 3) that still answers with what the command wrote.
class CommandsModule final : public IModule {
public:
    CommandsModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
