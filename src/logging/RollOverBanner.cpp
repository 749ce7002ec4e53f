#include "logging/RollOverBanner.h"

#include <cstddef>
#include <exception>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/Characters.h"
#include "base/TextOrEmpty.h"
#include "logging/BannerFacts.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/ICLogger.h"
#include "quillon/IDeviceInformation.h"
#include "quillon/LogText.h"
#include "quillon/LoggerUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr const char* kTitle = "--------------------------- Log roll-over ----------------------------";
constexpr const char* kEnd = "----------------------------------------------------------------------";
constexpr const char* kMarker = " ->";
constexpr const char* kUndefined = "undefined";

/// Returns the name of a value of a setting; values count from 0.
template <std::size_t count>
const char* NameOf(int value, const char* const (&names)[count]) {
    return value >= 0 && static_cast<std::size_t>(value) < count ? names[value] : kUndefined;
}

void ReportSwitches(ICLogger& log, const IAgentConfiguration& settings) {
    log.Info("Configured 'switch' setting:");
    const std::vector<IAgentConfiguration::SwitchEndpoint> switches = settings.GetSwitches();
    int number = 0;
    for (const auto& [host, port] : switches)
        log.Info("%s switch %d: '%s:%d'", kMarker, ++number, LogText::OneLine(host).c_str(), port);
    if (switches.empty()) log.Info("%s No Switch connection has been configured.", kMarker);
}

void ReportBackgroundChannels(ICLogger& log, const IAgentConfiguration& settings) {
    log.Info("Configured 'backgroundchannelurl' setting:");
    const std::vector<std::string> urls = settings.GetBackgroundChannelUrls();
    int number = 0;
    for (const std::string& url : urls)
        log.Info("%s backgroundchannelurl %d: '%s'", kMarker, ++number, LogText::OneLine(url).c_str());
    if (urls.empty()) log.Info("%s No Background channel has been configured.", kMarker);
}

void ReportAuthenticationPolicy(ICLogger& log, int policy) {
    if (policy == 0) {
        log.Warn(
            "Authentication Policy of None means a client certificate will not be presented to the Switch, "
            "which may reject the connection");
    } else if (policy == 1) {
        log.Info(
            "Authentication Policy of Optional means a client certificate may not be presented to the "
            "Switch, which may reject the connection");
    }
    log.Info("Configured 'authenticationpolicy' setting: '%s'",
             NameOf(policy, {"none", "optional", "required"}));
}

const char* TruthOf(std::string_view text) {
    if (text == "1" || base::EqualIgnoringCase<char>(text, "true")) return "true";
    if (text == "0" || base::EqualIgnoringCase<char>(text, "false")) return "false";
    return kUndefined;
}

void ReportInventory(ICLogger& log, const IAgentConfiguration& settings) {
    std::map<std::string, std::string> inventory;
    settings.GetModuleSettings("Inventory", inventory);
    const auto enabled = inventory.find("enabled");
    if (enabled == inventory.end()) return;
    log.Info("Configured 'module.inventory.enabled' setting: '%s'", TruthOf(enabled->second));
}

void ReportSettings(ICLogger& log, const IAgentConfiguration& settings) {
    log.Info(
        "Subset of configured settings reported for rollover. See the configuration file for other "
        "settings:");
    ReportSwitches(log, settings);
    ReportBackgroundChannels(log, settings);
    ReportAuthenticationPolicy(log, settings.GetAuthenticationPolicy());
    const char* const crlChecks = settings.GetCrlChecks();
    log.Info("Configured 'crlchecks' setting: '%s'",
             LogText::OneLine(crlChecks != nullptr ? crlChecks : "").c_str());
    log.Info("Configured 'logginglevel' setting: '%s'",
             NameOf(settings.GetLoggingLevel(), {"trace", "debug", "info", "warn", "error", "fatal"}));
    log.Info("Configured 'ssl' setting: '%s'", NameOf(settings.GetSsl(), {"none", "TLSv1.2"}));
    ReportInventory(log, settings);
}

/// Reports a setting only when it deviates from its safe value.
void ReportSecuritySettings(ICLogger& log, const IAgentConfiguration& settings) {
    if (!settings.GetEncryptDb()) log.Info("Configured 'encryptdb' setting: '%s'", "false");
    if (settings.GetIgnoreCertificateValidationErrors())
        log.Info("Configured 'ignorecertificatevalidationerrors' setting: '%s'", "true");
    if (settings.GetSkipDigitalSignatureChecks())
        log.Info("Configured 'skipdigitalsignaturechecks' setting: '%s'", "true");
}

/// Runs one part of the banner. The entry that rolled the log over is not written yet, so no exception of
/// a host's service may get past this.
template <class Report>
void Attempt(ICLogger& log, const Report& report) {
    constexpr const char* kFailed = "A report of the log roll-over failed: %s";
    try {
        report();
    } catch (const std::exception& error) {
        log.Error(kFailed, LogText::OneLine(base::TextOrEmpty(error.what())).c_str());
    } catch (...) {
        log.Error(kFailed, "unknown exception");
    }
}

}  // namespace

void PrepareRollOverBanner() { static_cast<void>(BannerHostName()); }

void WriteRollOverBanner() {
    auto* const logger = detail::RegisteredLoggerIfAny();
    if (logger == nullptr) return;
    LoggerUtils::LogCopyright(kTitle, logger, false);
    if (const auto* const settings = ServiceLocator::Get<IAgentConfiguration>(true)) {
        Attempt(*logger, [&] { ReportSettings(*logger, *settings); });
        Attempt(*logger, [&] { ReportSecuritySettings(*logger, *settings); });
    }
    if (auto* const device = ServiceLocator::Get<IDeviceInformation>(true)) {
        Attempt(*logger, [&] { device->LogDeviceInformation(); });
        logger->Info("%s", kEnd);
    }
}

}  // namespace quillon
