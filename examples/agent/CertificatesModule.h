#pragma once

#include "Module.h"

namespace quillon::agent {

/// What certificates say of themselves.
class CertificatesModule final : public IModule {
public:
    CertificatesModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
