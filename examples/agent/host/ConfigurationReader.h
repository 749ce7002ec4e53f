#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/IAgentConfiguration.h"

namespace quillon::agent {

/// The settings. What no file says stays safe: connections are authenticated and
/// encrypted, checks are made, and content is not downloaded.
struct AgentSettings {
    using ModuleSettings = std::map<std::string, std::string>;

    std::vector<IAgentConfiguration::SwitchEndpoint> switches;
    std::vector<std::string> backgroundChannelUrls;
    int authenticationPolicy = 2;
    std::string crlChecks = "hard";
    int loggingLevel = 3;
    bool isLoggingLevelGiven = false;
    int ssl = 1;
    bool encryptDb = true;
    bool ignoreCertificateValidationErrors = false;
    bool skipDigitalSignatureChecks = false;
    bool wayfarEnabled = false;
    std::map<std::string, ModuleSettings> modules;
    std::string moduleDirectory;  ///< of modules in libraries of their own; empty: there are none
    std::string timeZoneFile;     ///< overrides the library's mapping of time zones; empty: nothing does
};

/// Reads a document (JSON in UTF-8) into `settings`. Every fault adds a text "line N:
/// 'key' ..." to `faults`: a setting that is unknown, given twice, of another type, out of its
/// range or incomplete. Text that is not JSON ends the reading, and so does the hundredth fault.
/// Returns false when there is a fault; `settings` is then incomplete.
bool ReadSettings(std::string_view document, AgentSettings& settings, std::vector<std::string>& faults);

}  // namespace quillon::agent
