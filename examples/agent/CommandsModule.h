#pragma once

#include "Module.h"

namespace quillon::agent {

/// Runs command lines. A command that does not end with exit code 0 is a failed
/// invocation (code 3) that still answers with what the command wrote.
class CommandsModule final : public IModule {
public:
    CommandsModule();

    const std::string& GetName() const override { return m_name; }
    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    const std::string m_name = "Commands";
    const std::vector<Method> m_methods;
};

}  // namespace quillon::agent
