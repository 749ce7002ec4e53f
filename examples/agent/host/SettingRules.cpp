#include "host/SettingRules.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include "quillon/Url.h"

namespace quillon::agent {

namespace {

using Kind = SettingRule::Kind;
using Place = SettingPlace;
using Value = SettingValue;
using Settings = AgentSettings;

constexpr const char* kStored = "";
constexpr long long kLastPort = std::numeric_limits<std::uint16_t>::max();

/// The index of the choice, or what the value must be.
template <std::size_t Count>
const char* StoreChoice(const Value& value, const char* const (&names)[Count], const char* expected,
                        int& choice) {
    const auto* const given = std::get_if<std::string>(&value);
    const auto found = given == nullptr ? std::end(names) : std::find(names, std::end(names), *given);
    if (found == std::end(names)) return expected;
    choice = static_cast<int>(found - names);
    return kStored;
}

const char* StoreHost(Settings& settings, const Place&, const Value& value) {
    const auto* const host = std::get_if<std::string>(&value);
    if (host == nullptr || host->empty() || host->find('\0') != std::string::npos) return "a host name";
    settings.switches.back().host = *host;
    return kStored;
}

const char* StorePort(Settings& settings, const Place&, const Value& value) {
    const auto* const port = std::get_if<long long>(&value);
    if (port == nullptr || *port < 1 || *port > kLastPort) return "an integer from 1 to 65535";
    settings.switches.back().port = static_cast<int>(*port);
    return kStored;
}

bool IsGoodUrl(const std::string& text) {
    if (text.find('\0') != std::string::npos) return false;
    const Url url = Url::Parse(text);
    return url.IsValid() && url.Port() <= kLastPort;
}

const char* StoreUrl(Settings& settings, const Place&, const Value& value) {
    const auto* const url = std::get_if<std::string>(&value);
    if (url == nullptr || !IsGoodUrl(*url)) return "a URL of http or https";
    settings.backgroundChannelUrls.push_back(*url);
    return kStored;
}

const char* StoreAuthentication(Settings& settings, const Place&, const Value& value) {
    static const char* const names[] = {"none", "optional", "required"};
    return StoreChoice(value, names, "\"none\", \"optional\" or \"required\"", settings.authenticationPolicy);
}

const char* StoreCrlChecks(Settings& settings, const Place&, const Value& value) {
    static const char* const names[] = {"none", "soft", "hard"};
    int choice = 0;
    const char* const fault = StoreChoice(value, names, "\"none\", \"soft\" or \"hard\"", choice);
    settings.crlChecks = names[choice];
    return fault;
}

const char* StoreLevel(Settings& settings, const Place&, const Value& value) {
    static const char* const names[] = {"trace", "debug", "info", "warn", "error", "fatal"};
    return StoreChoice(value, names, "\"trace\", \"debug\", \"info\", \"warn\", \"error\" or \"fatal\"",
                       settings.loggingLevel);
}

const char* StoreGivenLevel(Settings& settings, const Place& place, const Value& value) {
    settings.isLoggingLevelGiven = true;
    return StoreLevel(settings, place, value);
}

const char* StoreSsl(Settings& settings, const Place&, const Value& value) {
    static const char* const names[] = {"none", "tls1.2"};
    return StoreChoice(value, names, "\"none\" or \"tls1.2\"", settings.ssl);
}

template <bool Settings::*Flag>
const char* StoreFlag(Settings& settings, const Place&, const Value& value) {
    const bool* const given = std::get_if<bool>(&value);
    if (given == nullptr) return "true or false";
    settings.*Flag = *given;
    return kStored;
}

const char* StorePath(const Value& value, const char* expected, std::string& path) {
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr || text->empty() || text->find('\0') != std::string::npos) return expected;
    path = *text;
    return kStored;
}

const char* StoreModuleDirectory(Settings& settings, const Place&, const Value& value) {
    return StorePath(value, "a directory", settings.moduleDirectory);
}

const char* StoreTimeZoneFile(Settings& settings, const Place&, const Value& value) {
    return StorePath(value, "a file", settings.timeZoneFile);
}

const char* StoreModuleSetting(Settings& settings, const Place& place, const Value& value) {
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr) return "a text";
    settings.modules[place.module][place.key] = *text;
    return kStored;
}

}  // namespace

const SettingRule* FindSettingRule(std::string_view pattern) {
    static constexpr SettingRule rules[] = {
        {"", Kind::Object},
        {"switches", Kind::Array},
        {"switches[]", Kind::Object},
        {"switches[].host", Kind::Scalar, &StoreHost},
        {"switches[].port", Kind::Scalar, &StorePort},
        {"backgroundChannelUrls", Kind::Array},
        {"backgroundChannelUrls[]", Kind::Scalar, &StoreUrl},
        {"authenticationPolicy", Kind::Scalar, &StoreAuthentication},
        {"crlChecks", Kind::Scalar, &StoreCrlChecks},
        {"loggingLevel", Kind::Scalar, &StoreGivenLevel},
        {"ssl", Kind::Scalar, &StoreSsl},
        {"encryptDb", Kind::Scalar, &StoreFlag<&Settings::encryptDb>},
        {"ignoreCertificateValidationErrors", Kind::Scalar,
         &StoreFlag<&Settings::ignoreCertificateValidationErrors>},
        {"skipDigitalSignatureChecks", Kind::Scalar, &StoreFlag<&Settings::skipDigitalSignatureChecks>},
        {"wayfarEnabled", Kind::Scalar, &StoreFlag<&Settings::wayfarEnabled>},
        {"moduleDirectory", Kind::Scalar, &StoreModuleDirectory},
        {"timeZoneFile", Kind::Scalar, &StoreTimeZoneFile},
        {"modules", Kind::Object},
        {"modules.*", Kind::Object},
        {"modules.*.*", Kind::Scalar, &StoreModuleSetting},
    };
    const auto* const found = std::find_if(std::begin(rules), std::end(rules),
                                           [pattern](const auto& rule) { return rule.pattern == pattern; });
    return found == std::end(rules) ? nullptr : found;
}

}  // namespace quillon::agent
