#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

/// The host's configuration, which the library only reads. Any thread. Texts are UTF-8.
class QUILLON_API IAgentConfiguration {
public:
    /// How the revocation of certificates is checked; every other value is strict.
    enum CRLChecks : std::int32_t { Soft = 1 };
    /// Where the agent connects to.
    struct SwitchEndpoint {
        std::string host;
        int port = 0;
    };

    static const char* __InterfaceId() { return "VntItf_IAgentConfiguration"; }

    virtual ~IAgentConfiguration();

    /// In the order that they are configured; copied by who needs it longer.
    virtual const std::vector<SwitchEndpoint>& GetSwitches() const = 0;
    virtual const std::vector<std::string>& GetBackgroundChannelUrls() const = 0;
    /// 0 none, 1 optional, 2 required.
    virtual int GetAuthenticationPolicy() const = 0;
    /// The setting as text.
    virtual const char* GetCrlChecks() const = 0;
    /// 0 to 5, as ICLogger::Level.
    virtual int GetLoggingLevel() const = 0;
    /// 0 none, 1 TLS 1.2.
    virtual int GetSsl() const = 0;
    /// Fills `settings`, from name to value; nothing for a module without any.
    virtual void GetModuleSettings(const std::string& module,
                                   std::map<std::string, std::string>& settings) const = 0;
    virtual bool GetEncryptDb() const = 0;
    virtual bool GetIgnoreCertificateValidationErrors() const = 0;
    virtual bool GetSkipDigitalSignatureChecks() const = 0;
    /// The content provider may be used.
    virtual bool IsWayfarEnabled() const = 0;
};

}  // namespace quillon
