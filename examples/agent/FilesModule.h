#pragma once

#include "Module.h"

namespace quillon::agent {

/// Finds and reads files: their versions, their text in any encoding.
class FilesModule final : public IModule {
public:
    FilesModule();

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

}  // namespace quillon::agent
