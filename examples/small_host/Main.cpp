// Loads the module of a path, runs its method Uptime.Read and ends: small_host MODULE
#include <quillon/CLogger.h>
#include <quillon/DataTableIO.h>
#include <quillon/IShutdownMonitor.h>
#include <quillon/LogText.h>
#include <quillon/MethodMetadataBuilder.h>
#include <quillon/RuntimeEnv.h>
#include <quillon/ServiceLocator.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>

#include "LoadEntry.h"

namespace {

using namespace quillon;

/// Has the waits of the library end once the process is asked to.
class ShutdownMonitor final : public IShutdownMonitor {
public:
    ShutdownMonitor() {
        std::signal(SIGINT, [](int) { m_isRequested = true; });
        std::signal(SIGTERM, [](int) { m_isRequested = true; });
    }
    void RequestShutdown() override { m_isRequested = true; }
    bool IsShutdownRequested() override { return m_isRequested; }

private:
    static inline std::atomic<bool> m_isRequested = false;
};

template <class Interface, class Builder>
void RegisterBuilder() {
    ServiceLocator::AddFactory<Interface>([] { return new Builder; },
                                          [](Interface* builder) { delete builder; });
}

/// What modules find: it begins before the first of them, and ends after the last.
class Services {
public:
    Services() {
        ICLogger* const logger = CLogger::GetInstance();
        logger->InitializeLogging("small_host.log", ICLogger::Level::Info);
        ServiceLocator::Put<ICLogger>(logger);
        ServiceLocator::Put<IShutdownMonitor>(&m_shutdownMonitor);
        RegisterBuilder<IMethodMetadataBuilder, MethodMetadataBuilder>();
        RegisterBuilder<IMethodParameterBuilder, MethodParameterBuilder>();
        RegisterBuilder<IMethodColumnBuilder, MethodColumnBuilder>();
        RuntimeEnv::GetInstance()->setEnvType(IRuntimeEnv::AgentEngine);
    }
    ~Services() {
        ServiceLocator::Clear();
        RuntimeEnv::ReleaseInstance();
        CLogger::GetInstance()->StopLogging();  // closes the file
        CLogger::ReleaseInstance();
    }
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

private:
    ShutdownMonitor m_shutdownMonitor;
};

/// Runs a method. One that throws is a failure of that call, not of the host.
InvocationResult Run(const IModule& module, const char* name, const MethodParameters& parameters) {
    InvocationResult result;
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = std::string("There is no method ") + name;
    for (const Method& method : module.GetMethods()) {
        if (std::strcmp(method.metadata->MethodName(), name) != 0) continue;
        try {
            result = {};
            method.run(parameters, result);
        } catch (const std::exception& error) {
            result.resultCode = InvocationResult::kMethodThrew;
            result.errorMessage = error.what();
        }
    }
    return result;
}

int RunModule(const std::string& path) {
    const ModuleEntry& entry = LoadEntry(path);
    const std::unique_ptr<IModule, void (*)(IModule*)> module(entry.create(), entry.destroy);
    if (module == nullptr) throw std::runtime_error("The entry makes no module");
    ServiceLocator::Get<ICLogger>()->Info("Loaded %s %s", entry.name, entry.version);
    MethodParameters parameters;
    parameters.scalars.Add(Variant("timeout", 5));
    const InvocationResult result = Run(*module, "Uptime.Read", parameters);
    std::cout << ToText(result.resultTable) << result.errorMessage << '\n';
    return result.resultCode;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const Services services;
    try {
        return RunModule(arguments[1]);
    } catch (const std::exception& error) {
        ServiceLocator::Get<ICLogger>()->Error("%s", LogText::OneLine(error.what()).c_str());
        return 1;
    }
}
