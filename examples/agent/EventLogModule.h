#pragma once

#include "Module.h"

namespace quillon::agent {

/// Reads channels of the system's event log, and follows them.
class EventLogModule final : public IModule {
public:
    EventLogModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
