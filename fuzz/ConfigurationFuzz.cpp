#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "InputLocale.h"
#include "Require.h"
#include "host/ConfigurationReader.h"
#include "quillon/Url.h"

// The input is a configuration file. It is refused, with faults that name their lines, or
// gives settings that are within their ranges; whatever the decimal point of the C library is.
namespace {

using namespace quillon;

void RequireRanges(const agent::AgentSettings& settings) {
    for (const auto& endpoint : settings.switches)
        Require(!endpoint.host.empty() && endpoint.port >= 1 && endpoint.port <= 65535);
    for (const std::string& url : settings.backgroundChannelUrls) Require(Url::Parse(url).IsValid());
    Require(settings.authenticationPolicy >= 0 && settings.authenticationPolicy <= 2);
    Require(settings.loggingLevel >= 0 && settings.loggingLevel <= 5);
    Require(settings.ssl == 0 || settings.ssl == 1);
    Require(!settings.crlChecks.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UseInputLocale(size);
    const std::string document(reinterpret_cast<const char*>(data), size);
    agent::AgentSettings settings;
    std::vector<std::string> faults;
    const bool isRead = agent::ReadSettings(document, settings, faults);
    Require(isRead == faults.empty() && faults.size() <= 101);
    for (const std::string& fault : faults) {
        Require(fault.starts_with("line ") && fault.find_first_of("\n\r\x1B") == std::string::npos);
        Require(static_cast<std::size_t>(std::atoll(fault.c_str() + 5)) <= size + 1);
    }
    if (isRead) RequireRanges(settings);
    return 0;
}
