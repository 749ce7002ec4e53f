#include "quillon/Module.h"

#include <utility>

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

}  // namespace

IModule::~IModule() = default;

Method MakeMethod(const char* name, IMethodMetadata::MetadataAgentVersion introduced,
                  const std::function<void(IMethodMetadataBuilder&)>& describe, MethodFunction run) {
    using Record = IMethodMetadata;
    const auto builder = ServiceLocator::GetInstance<IMethodMetadataBuilder>();
    builder->MethodName(name);
    describe(*builder);
    std::unique_ptr<IMethodMetadata> metadata = builder->Build();
    metadata->Introduced(introduced, {{Record::MacOS, Record::No},
                                      {Record::SolarisIntel, Record::No},
                                      {Record::SolarisSparc, Record::No},
                                      {Record::Android, Record::No}});
    return {std::move(metadata), std::move(run)};
}

std::unique_ptr<IModule> MakeModule(std::vector<Method> methods) {
    return std::make_unique<FixedModule>(std::move(methods));
}

}  // namespace quillon
