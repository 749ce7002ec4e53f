#pragma once

#include "Module.h"

namespace quillon::agent {

/// Looks names up and tests addresses.
class NetworkModule final : public IModule {
public:
    NetworkModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
