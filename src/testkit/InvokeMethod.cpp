#include "quillon/testkit/InvokeMethod.h"

#include <exception>
#include <stdexcept>
#include <string_view>

#include "modules/Arguments.h"
#include "quillon/ErrorHelper.h"
#include "quillon/MethodMetadataBuilder.h"
#include "quillon/ServiceLocator.h"

namespace quillon::testkit {

namespace {

InvocationResult Failure(std::int32_t code, const std::string& message) {
    InvocationResult result;
    result.resultCode = code;
    result.errorMessage = message;
    return result;
}

InvocationResult Thrown(const std::string& name, std::string_view what) {
    return Failure(InvocationResult::kMethodThrew, "Method '" + name + "' threw: " + std::string(what));
}

template <class Interface, class Builder>
void RegisterBuilder() {
    if (ServiceLocator::HasFactory<Interface>()) return;
    ServiceLocator::AddFactory<Interface>([] { return new Builder; },
                                          [](Interface* builder) { delete builder; });
}

const Method* Find(const IModule& module, const std::string& name) {
    for (const Method& method : module.GetMethods()) {
        if (name == method.metadata->MethodName()) return &method;
    }
    return nullptr;
}

/// `read` fills the parameters of the call, or writes into the result what is wrong with them.
template <class Read>
InvocationResult Invoke(const IModule& module, const std::string& name, const Read& read) {
    const Method* const method = Find(module, name);
    if (method == nullptr) return Failure(InvocationResult::kBadParameter, "Unknown method '" + name + "'");
    try {
        InvocationResult result;
        MethodParameters parameters;
        if (read(*method, parameters, result)) method->run(parameters, result);
        return result;
    } catch (const std::exception& error) {
        return Thrown(name, ErrorHelper::GetExceptionMessage(error));
    } catch (...) {
        return Thrown(name, "something that is no std::exception");
    }
}

}  // namespace

void RegisterBuilders() {
    RegisterBuilder<IMethodMetadataBuilder, MethodMetadataBuilder>();
    RegisterBuilder<IMethodParameterBuilder, MethodParameterBuilder>();
    RegisterBuilder<IMethodColumnBuilder, MethodColumnBuilder>();
}

std::shared_ptr<IModule> CreateModule(const ModuleEntry& entry) {
    if (entry.interfaceVersion != kModuleInterfaceVersion)
        throw std::invalid_argument("The module is of another version of the interface");
    RegisterBuilders();
    IModule* const module = entry.create();
    if (module == nullptr) throw std::invalid_argument("The entry makes no module");
    return {module, entry.destroy};
}

InvocationResult InvokeMethod(const IModule& module, const std::string& name,
                              const MethodArguments& arguments) {
    return Invoke(module, name, [&arguments](const Method& method, auto& parameters, auto& result) {
        std::vector<std::string> texts;
        for (const auto& [parameter, text] : arguments) texts.push_back(parameter + '=' + text);
        return agent::ReadParameters(texts, *method.metadata, parameters, result);
    });
}

InvocationResult InvokeWithParameters(const IModule& module, const std::string& name,
                                      const MethodParameters& given) {
    return Invoke(module, name, [&given](const Method&, auto& parameters, auto&) {
        parameters = given;
        return true;
    });
}

}  // namespace quillon::testkit
