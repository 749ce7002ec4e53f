#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "quillon/DescribedBinder.h"
#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon {

/// Runs a method: binds the parameters itself and reports everything through the result. A host may
/// call it on several threads at once.
using MethodFunction = std::function<void(const MethodParameters&, InvocationResult&)>;
/// Does the same with a binder of the method's own description, through which it reads the parameters.
using DescribedMethodFunction = std::function<void(DescribedBinder&, InvocationResult&)>;

/// Holds one method: its description, named "Module.Method", and the function that runs it and may use it.
struct Method {
    std::unique_ptr<IMethodMetadata> metadata;
    MethodFunction run;
};

/// Describes a method, but for its name, with the builder that the host registered
/// (IMethodMetadataBuilder in ServiceLocator), and returns it. The method exists on Windows and Linux,
/// since `introduced`. The description keeps the texts' addresses: they are literals. Throws what the
/// builder and `describe` throw, and std::invalid_argument when the host has registered no builder and
/// when the method has no name.
///
/// @code
/// void Echo(DescribedBinder& call, InvocationResult& result) {
///     std::string text;
///     call.Add("text", text);
///     if (!call.Bind(result)) return;
///     result.resultTable.AddRow(VariantList(Variant("Text", text)));
/// }
///
/// Method MakeEcho() {
///     const auto describe = [](IMethodMetadataBuilder& builder) {
///         builder.Description("Answers with its parameter.")
///             .CreateParameter("text", typeid(std::string)).Description("Any text.").BindParameter()
///             .CreateColumn("Text", typeid(std::string), false).Description("The same text.").BindColumn();
///     };
///     return MakeMethod("Sample.Echo", IMethodMetadata::V5_0, describe, &Echo);
/// }
/// @endcode
[[nodiscard]] QUILLON_API Method MakeMethod(const char* name,
                                            IMethodMetadata::MetadataAgentVersion introduced,
                                            const std::function<void(IMethodMetadataBuilder&)>& describe,
                                            MethodFunction run);
[[nodiscard]] QUILLON_API Method MakeMethod(const char* name,
                                            IMethodMetadata::MetadataAgentVersion introduced,
                                            const std::function<void(IMethodMetadataBuilder&)>& describe,
                                            DescribedMethodFunction run);

/// Is a family of methods, as a host holds it.
class QUILLON_API IModule {
public:
    virtual ~IModule();

    /// Returns the methods, which are the same for the module's whole life.
    virtual const std::vector<Method>& GetMethods() const = 0;
};

/// Returns a module that has just these methods.
[[nodiscard]] QUILLON_API std::unique_ptr<IModule> MakeModule(std::vector<Method> methods);

}  // namespace quillon
