#pragma once

#include "Module.h"

namespace quillon::agent {

/// Downloads content through the host's provider, and reads content lists.
class ContentModule final : public IModule {
public:
    ContentModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
