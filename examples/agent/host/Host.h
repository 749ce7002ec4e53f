#pragma once

#include <functional>
#include <string>
#include <vector>

#include "content/ContentProvider.h"
#include "host/AgentConfiguration.h"
#include "host/DeviceInformation.h"
#include "host/Logging.h"
#include "host/ProviderRegistry.h"
#include "host/ShutdownMonitor.h"
#include "modules/Modules.h"
#include "quillon/InvocationResult.h"
#include "sql/DatabaseFolder.h"
#include "sql/SqliteEngine.h"

namespace quillon::agent {

/// Sets up the surroundings of the modules: the logger, the services that the library and the modules
/// find through ServiceLocator, and the way to a method. There is one at a time.
class Host {
public:
    /// The directory of the databases, below that of the data.
    static constexpr const char* kDatabaseFolder = "Stores";

    /// The databases are in a directory, by default "Stores" in the agent's data directory; a library path.
    /// Beside the built-in modules there are those in the configuration's directory of modules.
    explicit Host(const LogSettings& log, const std::string& databases = DefaultDatabaseFolder(),
                  const AgentConfiguration& configuration = AgentConfiguration());
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    static std::string DefaultDatabaseFolder();

    const ModuleList& GetModules() const { return m_modules; }
    /// Returns the names of the documented methods, and the method of a name or null.
    std::vector<std::string> MethodNames() const;
    const Method* FindMethod(const std::string& fullName) const;

    /// Runs "Module.Method" with "name=value" texts. An unknown method and a value that
    /// is not of its parameter's type give code 2, like any other bad call; a method
    /// that throws gives code 1.
    InvocationResult Run(const std::string& method, const std::vector<std::string>& arguments) const;

    /// Returns the parameters of a call to the method; or writes into the result what is wrong with them,
    /// and returns null.
    using ParameterReader =
        std::function<const MethodParameters*(const IMethodMetadataReader&, InvocationResult&)>;
    /// Runs a method in the same way with parameters of any origin, on any thread.
    InvocationResult Run(const std::string& method, const ParameterReader& read) const;

private:
    DeviceInformation m_deviceInformation;
    AgentConfiguration m_configuration;
    ShutdownMonitor m_shutdownMonitor;
    ContentProvider m_contentProvider;
    ProviderRegistry m_providers;
    DatabaseFolder m_databases;
    SqliteEngine m_sqlEngine;
    ModuleList m_modules;
};

}  // namespace quillon::agent
