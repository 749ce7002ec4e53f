#pragma once

#include <map>
#include <memory>
#include <string>

#include "quillon/testkit/RecordingLogger.h"
#include "quillon/testkit/ShutdownMonitor.h"

namespace quillon::testkit {

/// Sets up the services that a host registers with ServiceLocator, for its life: the logger, the shutdown
/// monitor, the configuration, the device's information, the registry of providers, the SQL engine and the
/// builders of descriptions. There is one at a time, made before a module and ended after it.
///
/// @code
/// class UptimeTest : public testing::Test {
/// protected:
///     testkit::TestHost host;
///     const std::shared_ptr<IModule> module = testkit::CreateModule(*QuillonModuleEntry());
/// };
/// @endcode
class TestHost {
public:
    /// Keeps databases in memory, or in files of a directory (a library path).
    TestHost();
    explicit TestHost(const std::string& databaseDirectory);
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    /// Sets what IAgentConfiguration::GetModuleSettings() gives to a module.
    void SetModuleSettings(const std::string& module, std::map<std::string, std::string> settings);

    RecordingLogger log;
    ShutdownMonitor shutdown;

private:
    struct State;
    explicit TestHost(const std::string* databaseDirectory);

    const std::unique_ptr<State> m_state;
};

}  // namespace quillon::testkit
