#pragma once

#include "Module.h"

namespace quillon::agent {

/// Keeps security auditing of a sub-category switched on.
class AuditModule final : public IModule {
public:
    AuditModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
