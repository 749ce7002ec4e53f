#include "Module.h"

#include <utility>

#include "quillon/ServiceLocator.h"

namespace quillon::agent {

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

bool Fail(std::int32_t code, const std::string& message, InvocationResult& result) {
    result.resultCode = code;
    result.errorMessage = message;
    return false;
}

bool RefuseParameter(const std::string& message, InvocationResult& result) {
    constexpr std::int32_t kBadParameter = 2;
    return Fail(kBadParameter, message, result);
}

}  // namespace quillon::agent
