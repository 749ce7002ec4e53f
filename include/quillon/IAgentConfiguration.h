#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

/// Gives the library the host's configuration, which it only reads: for the banner of the log file and
/// for the content provider. The host implements it and registers it with
/// ServiceLocator. Any thread may call it, also while the log file is being rolled over: an
/// implementation must not take a lock that is held while something is logged. Texts are
/// UTF-8. What an operation returns must stay valid and unchanged while other threads may read it.
class QUILLON_API IAgentConfiguration {
public:
    /// Says how the revocation of certificates is checked; every other value is strict.
    enum CRLChecks : std::int32_t { Soft = 1 };
    /// Names a server that the agent connects to: a host name or an address, and a TCP port.
    struct SwitchEndpoint {
        std::string host;
        int port = 0;
    };

    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IAgentConfiguration"; }

    virtual ~IAgentConfiguration();

    /// Return the endpoints and the URLs in the order of the configuration. The library copies them
    /// before it uses them.
    virtual const std::vector<SwitchEndpoint>& GetSwitches() const = 0;
    virtual const std::vector<std::string>& GetBackgroundChannelUrls() const = 0;
    /// Returns 0 for none, 1 for optional, 2 for required.
    virtual int GetAuthenticationPolicy() const = 0;
    /// Returns the setting as text, for the banner.
    virtual const char* GetCrlChecks() const = 0;
    /// Returns 0 to 5, as ICLogger::Level.
    virtual int GetLoggingLevel() const = 0;
    /// Returns 0 for none, 1 for TLS 1.2.
    virtual int GetSsl() const = 0;
    /// Adds the settings of one module to `settings`, from name to value; nothing for a module without
    /// any.
    virtual void GetModuleSettings(const std::string& module,
                                   std::map<std::string, std::string>& settings) const = 0;
    /// Return the switches of the same name; the banner names those that weaken the defaults.
    virtual bool GetEncryptDb() const = 0;
    virtual bool GetIgnoreCertificateValidationErrors() const = 0;
    virtual bool GetSkipDigitalSignatureChecks() const = 0;
    /// Returns whether content may be downloaded through the content provider.
    virtual bool IsWayfarEnabled() const = 0;
};

}  // namespace quillon
