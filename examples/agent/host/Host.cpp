#include "host/Host.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string_view>

#include "common/Failure.h"
#include "common/ShownText.h"
#include "common/Suggestion.h"
#include "host/ModuleLoader.h"
#include "modules/Arguments.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/ErrorHelper.h"
#include "quillon/LogText.h"
#include "quillon/LoggerUtils.h"
#include "quillon/MethodMetadataBuilder.h"
#include "quillon/PathUtils.h"
#include "quillon/RuntimeEnv.h"
#include "quillon/ServiceLocator.h"

namespace quillon::agent {

namespace {

constexpr const char* kStartTitle = "--------------------------- Agent started ----------------------------";

InvocationResult Failure(std::int32_t code, const std::string& message) {
    InvocationResult result;
    result.resultCode = code;
    result.errorMessage = message;
    return result;
}

/// Answers for a method that left by an exception.
InvocationResult Thrown(const std::string& method, std::string_view what) {
    try {
        ServiceLocator::Get<ICLogger>()->Error("Method '%s' threw: %s", LogText::OneLine(method).c_str(),
                                               LogText::OneLine(what).c_str());
        return Failure(InvocationResult::kMethodThrew, "Method '" + method + "' threw: " + std::string(what));
    } catch (const std::bad_alloc&) {
        InvocationResult result;
        result.resultCode = InvocationResult::kMethodThrew;
        result.errorMessage = "Out of memory";  // for which there is room in any text
        return result;
    }
}

/// Adds to each undefined parameter the described name that it resembles.
void Hint(const IMethodMetadataReader& method, InvocationResult& result) {
    constexpr std::string_view kUndefined = "Undefined parameter named '";
    if (result.resultCode != InvocationResult::kBadParameter) return;
    std::vector<std::string> names;
    method.VisitParameter([&names](const char* described, const auto&) { names.emplace_back(described); });
    std::string& text = result.errorMessage;
    for (std::size_t at = text.find(kUndefined); at != std::string::npos; at = text.find(kUndefined, at)) {
        at += kUndefined.size();
        const std::size_t end = std::min(text.find('\'', at), text.size() - 1);
        text.insert(end + 1, Suggestion(text.substr(at, end - at), names));
    }
}

/// A builder describes one item: each is made afresh.
template <class Interface, class Builder>
void RegisterBuilder() {
    ServiceLocator::AddFactory<Interface>([] { return new Builder; },
                                          [](Interface* builder) { delete builder; });
}

}  // namespace

/// The registry has no lock: everything is registered before a module can start a thread.
Host::Host(const LogSettings& log, const std::string& databases, const AgentConfiguration& configuration)
    : m_configuration(configuration), m_databases(databases), m_sqlEngine(m_databases) {
    ICLogger* const logger = StartLogging(log);
    if (!log.file.empty()) LoggerUtils::LogCopyright(kStartTitle, logger, false);
    ServiceLocator::Put<ICLogger>(logger);
    ServiceLocator::Put<IAgentConfiguration>(&m_configuration);
    ServiceLocator::Put<IDeviceInformation>(&m_deviceInformation);
    ServiceLocator::Put<IShutdownMonitor>(&m_shutdownMonitor);
    ServiceLocator::Put<IShutdownNotifier>(&m_shutdownMonitor);
    m_providers.Add("Wayfar", m_contentProvider);
    ServiceLocator::Put<IProviderRegistry>(&m_providers);
    ServiceLocator::Put<ISqliteInstance>(&m_sqlEngine);
    ServiceLocator::Put<ISqliteQueries>(&m_sqlEngine);
    ServiceLocator::Put<DatabaseFolder>(&m_databases);
    RegisterBuilder<IMethodMetadataBuilder, MethodMetadataBuilder>();
    RegisterBuilder<IMethodParameterBuilder, MethodParameterBuilder>();
    RegisterBuilder<IMethodColumnBuilder, MethodColumnBuilder>();
    RuntimeEnv::GetInstance()->setEnvType(IRuntimeEnv::AgentEngine);
    // A file that cannot be used is logged; the library's own mapping holds then.
    if (!m_configuration.GetTimeZoneFile().empty())
        static_cast<void>(DateTimeUtils::OverrideTimezones(m_configuration.GetTimeZoneFile()));
    m_modules = MakeModules();
    if (!m_configuration.GetModuleDirectory().empty())
        LoadModules(m_configuration.GetModuleDirectory(), m_modules);
}

std::string Host::DefaultDatabaseFolder() {
    return PathUtils::BuildFilenameRelativeToDynamicDataDirectory(kDatabaseFolder);
}

Host::~Host() {
    m_modules.clear();
    ServiceLocator::Clear();
    RuntimeEnv::ReleaseInstance();
    EndLogging();
}

InvocationResult Host::Run(const std::string& method, const std::vector<std::string>& arguments) const {
    MethodParameters parameters;
    return Run(method, [&](const IMethodMetadataReader& metadata, InvocationResult& result) {
        return ReadParameters(arguments, metadata, parameters, result) ? &parameters : nullptr;
    });
}

InvocationResult Host::Run(const std::string& method, const ParameterReader& read) const {
    const Method* const found = FindMethod(method);
    if (found == nullptr)
        return Failure(InvocationResult::kBadParameter,
                       "Unknown method '" + ShownText(method) + "'" + Suggestion(method, MethodNames()));
    try {
        InvocationResult result;
        const MethodParameters* const parameters = read(*found->metadata, result);
        if (parameters != nullptr) found->run(*parameters, result);
        Hint(*found->metadata, result);
        return result;
    } catch (const std::exception& error) {
        return Thrown(method, ErrorHelper::GetExceptionMessage(error));
    } catch (...) {
        return Thrown(method, "something that is no std::exception");
    }
}

std::vector<std::string> Host::MethodNames() const {
    std::vector<std::string> names;
    for (const auto& module : m_modules) {
        for (const Method& method : module->GetMethods()) {
            if (!method.metadata->IsUndocumented()) names.emplace_back(method.metadata->MethodName());
        }
    }
    return names;
}

const Method* Host::FindMethod(const std::string& fullName) const {
    for (const auto& module : m_modules) {
        for (const Method& method : module->GetMethods()) {
            if (fullName == method.metadata->MethodName()) return &method;
        }
    }
    return nullptr;
}

}  // namespace quillon::agent
