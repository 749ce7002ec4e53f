#pragma once

#include "Module.h"

namespace quillon::agent {

/// Asks WMI, changes its objects and calls their methods. What WMI refuses is a failed
/// invocation (code 3) with WMI's own text.
class WmiModule final : public IModule {
public:
    WmiModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
