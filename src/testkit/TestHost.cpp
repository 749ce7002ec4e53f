#include "quillon/testkit/TestHost.h"

#include <utility>
#include <vector>

#include "quillon/IAgentConfiguration.h"
#include "quillon/IDeviceInformation.h"
#include "quillon/IProviderRegistry.h"
#include "quillon/RuntimeEnv.h"
#include "quillon/testkit/InvokeMethod.h"
#include "quillon/testkit/SqlEngine.h"

namespace quillon::testkit {

namespace {

/// A host that is not connected to anything and trusts nobody.
class Configuration final : public IAgentConfiguration {
public:
    const std::vector<SwitchEndpoint>& GetSwitches() const override { return m_switches; }
    const std::vector<std::string>& GetBackgroundChannelUrls() const override { return m_urls; }
    int GetAuthenticationPolicy() const override { return 0; }
    const char* GetCrlChecks() const override { return ""; }
    int GetLoggingLevel() const override { return 0; }
    int GetSsl() const override { return 0; }
    void GetModuleSettings(const std::string& module,
                           std::map<std::string, std::string>& settings) const override {
        const auto found = modules.find(module);
        if (found == modules.end()) return;
        for (const auto& [name, value] : found->second) settings[name] = value;
    }
    bool GetEncryptDb() const override { return false; }
    bool GetIgnoreCertificateValidationErrors() const override { return false; }
    bool GetSkipDigitalSignatureChecks() const override { return false; }
    bool IsWayfarEnabled() const override { return false; }

    std::map<std::string, std::map<std::string, std::string>> modules;

private:
    std::vector<SwitchEndpoint> m_switches;
    std::vector<std::string> m_urls;
};

class Device final : public IDeviceInformation {
public:
    void LogDeviceInformation() override {}
};

class NoProviders final : public IProviderRegistry {
public:
    IProvider* GetProvider(const std::string&) override { return nullptr; }
};

template <class Service>
void RemoveOwn(Service& own) {
    if (ServiceLocator::Get<Service>(true) == &own) ServiceLocator::Remove<Service>();
}

}  // namespace

struct TestHost::State {
    explicit State(const std::string* directory)
        : engine(directory == nullptr ? std::make_unique<SqlEngine>()
                                      : std::make_unique<SqlEngine>(*directory)) {
        ServiceLocator::Put<IAgentConfiguration>(&configuration);
        ServiceLocator::Put<IDeviceInformation>(&device);
        ServiceLocator::Put<IProviderRegistry>(&providers);
    }
    ~State() {
        RemoveOwn<IAgentConfiguration>(configuration);
        RemoveOwn<IDeviceInformation>(device);
        RemoveOwn<IProviderRegistry>(providers);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    std::unique_ptr<SqlEngine> engine;
    Configuration configuration;
    Device device;
    NoProviders providers;
};

TestHost::TestHost() : TestHost(static_cast<const std::string*>(nullptr)) {}

TestHost::TestHost(const std::string& databaseDirectory) : TestHost(&databaseDirectory) {}

TestHost::TestHost(const std::string* databaseDirectory)
    : m_state(std::make_unique<State>(databaseDirectory)) {
    RegisterBuilders();
    RuntimeEnv::GetInstance()->setEnvType(IRuntimeEnv::AgentEngine);
    log.Forget();
}

TestHost::~TestHost() { RuntimeEnv::ReleaseInstance(); }

void TestHost::SetModuleSettings(const std::string& module, std::map<std::string, std::string> settings) {
    m_state->configuration.modules[module] = std::move(settings);
}

}  // namespace quillon::testkit
