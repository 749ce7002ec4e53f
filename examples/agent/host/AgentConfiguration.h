#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/ConfigurationReader.h"
#include "quillon/IAgentConfiguration.h"

namespace quillon::agent {

/// The agent's configuration: the settings of one file, or safe ones. It does not change once a host has it.
class AgentConfiguration final : public IAgentConfiguration {
public:
    explicit AgentConfiguration(AgentSettings settings = {}) : m_settings(std::move(settings)) {}

    /// Reads a file of at most 1 MiB. Throws std::runtime_error with a line "FILE: ..." for
    /// every fault; `file` is UTF-8.
    static AgentConfiguration Load(const std::string& file);

    const std::vector<SwitchEndpoint>& GetSwitches() const override { return m_settings.switches; }
    const std::vector<std::string>& GetBackgroundChannelUrls() const override {
        return m_settings.backgroundChannelUrls;
    }
    int GetAuthenticationPolicy() const override { return m_settings.authenticationPolicy; }
    const char* GetCrlChecks() const override { return m_settings.crlChecks.c_str(); }
    int GetLoggingLevel() const override { return m_settings.loggingLevel; }
    /// Returns whether the file sets the level, which otherwise depends on where the log goes.
    bool IsLoggingLevelGiven() const { return m_settings.isLoggingLevelGiven; }
    int GetSsl() const override { return m_settings.ssl; }
    void GetModuleSettings(const std::string& module,
                           std::map<std::string, std::string>& settings) const override;
    bool GetEncryptDb() const override { return m_settings.encryptDb; }
    bool GetIgnoreCertificateValidationErrors() const override {
        return m_settings.ignoreCertificateValidationErrors;
    }
    bool GetSkipDigitalSignatureChecks() const override { return m_settings.skipDigitalSignatureChecks; }
    bool IsWayfarEnabled() const override { return m_settings.wayfarEnabled; }
    /// Returns where modules in libraries of their own are; the empty text for nowhere.
    const std::string& GetModuleDirectory() const { return m_settings.moduleDirectory; }
    const std::string& GetTimeZoneFile() const { return m_settings.timeZoneFile; }
    void SetModuleDirectory(const std::string& directory) { m_settings.moduleDirectory = directory; }

private:
    AgentSettings m_settings;
};

}  // namespace quillon::agent
