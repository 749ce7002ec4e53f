#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "common/Failure.h"
#include "quillon/IMethodMetadata.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon::agent {

/// Runs a method: binds the parameters itself and reports everything through the result.
using MethodFunction = std::function<void(const MethodParameters&, InvocationResult&)>;

/// One method: its description, named "Module.Method", and the function that runs it.
struct Method {
    std::unique_ptr<IMethodMetadata> metadata;
    MethodFunction run;
};

/// Describes a method, but for its name, with the builder that the host registered.
/// The method exists on Windows and Linux, since `introduced`. Texts are literals.
Method MakeMethod(const char* name, IMethodMetadata::MetadataAgentVersion introduced,
                  const std::function<void(IMethodMetadataBuilder&)>& describe, MethodFunction run);

/// A family of methods.
class IModule {
public:
    virtual ~IModule() = default;

    /// The same for the module's whole life.
    virtual const std::vector<Method>& GetMethods() const = 0;
};

/// Returns a module that has just these methods.
std::unique_ptr<IModule> MakeModule(std::vector<Method> methods);

}  // namespace quillon::agent
