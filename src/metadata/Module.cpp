#include "quillon/Module.h"

#include <stdexcept>
#include <utility>

#include "base/TextOrEmpty.h"
#include "quillon/ServiceLocator.h"

namespace quillon {

namespace {

class FixedModule final : public IModule {
public:
    explicit FixedModule(std::vector<Method> methods) : m_methods(std::move(methods)) {}

    const std::vector<Method>& GetMethods() const override { return m_methods; }

private:
    std::vector<Method> m_methods;
};

std::unique_ptr<IMethodMetadata> DescribeMethod(
    const char* name, IMethodMetadata::MetadataAgentVersion introduced,
    const std::function<void(IMethodMetadataBuilder&)>& describe) {
    using Record = IMethodMetadata;
    if (base::TextOrEmpty(name).empty()) throw std::invalid_argument("A method without a name");
    const auto builder = ServiceLocator::GetInstance<IMethodMetadataBuilder>();
    builder->MethodName(name);
    describe(*builder);
    std::unique_ptr<IMethodMetadata> metadata = builder->Build();
    metadata->Introduced(introduced, {{Record::MacOS, Record::No},
                                      {Record::SolarisIntel, Record::No},
                                      {Record::SolarisSparc, Record::No},
                                      {Record::Android, Record::No}});
    return metadata;
}

}  // namespace

IModule::~IModule() = default;

Method MakeMethod(const char* name, IMethodMetadata::MetadataAgentVersion introduced,
                  const std::function<void(IMethodMetadataBuilder&)>& describe, MethodFunction run) {
    return {DescribeMethod(name, introduced, describe), std::move(run)};
}

Method MakeMethod(const char* name, IMethodMetadata::MetadataAgentVersion introduced,
                  const std::function<void(IMethodMetadataBuilder&)>& describe, DescribedMethodFunction run) {
    Method method{DescribeMethod(name, introduced, describe), {}};
    if (!run) return method;
    method.run = [described = method.metadata.get(), run = std::move(run)](const MethodParameters& parameters,
                                                                           InvocationResult& result) {
        DescribedBinder binder(parameters, *described);
        run(binder, result);
    };
    return method;
}

std::unique_ptr<IModule> MakeModule(std::vector<Method> methods) {
    return std::make_unique<FixedModule>(std::move(methods));
}

}  // namespace quillon
