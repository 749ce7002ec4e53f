#include "Utils/internal/TimeZoneMapper.h"

#include <algorithm>
#include <new>
#include <pugixml.hpp>
#include <utility>

#include "platform/ResourceApi.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {
namespace {

using Zones = std::unordered_map<std::string, std::string>;

/// Where the entries are, and what is said when a step is missing.
constexpr struct {
    const char* name;
    const char* missing;
} kSteps[] = {
    {"supplementalData", "Timezone mapping document does not contain 'supplementalData'"},
    {"windowsZones", "Timezone mapping document 'supplementalData' does not contain 'windowsZones'"},
    {"mapTimezones", "Timezone mapping document 'windowsZones' does not contain 'mapTimezones'"},
    {"mapZone", "Timezone mapping document 'mapTimezone' does not contain any 'mapZone'"},
};

struct Message {
    ICLogger::Level level;
    std::string text;
};

void Log(const Message& message) {
    auto* const logger = detail::RegisteredLogger();
    if (logger == nullptr) return;
    if (message.level == ICLogger::Level::Warn) logger->Warn("%s", LogText::OneLine(message.text).c_str());
    if (message.level == ICLogger::Level::Error) logger->Error("%s", LogText::OneLine(message.text).c_str());
}

/// Reads the entries from the first "mapZone" on. The first entry of a zone counts.
void AddZones(pugi::xml_node entry, Zones& zones) {
    for (; entry; entry = entry.next_sibling("mapZone")) {
        const auto windowsZone = entry.attribute("other");
        const auto ianaZone = entry.attribute("type");
        const std::string_view territory = entry.attribute("territory").value();  // "" without one
        if (territory == "001" && windowsZone && ianaZone)
            zones.emplace(windowsZone.value(), ianaZone.value());
    }
}

/// The message of a document that cannot be parsed, with the text from the error on.
Message ParseError(const pugi::xml_parse_result& result, std::string_view text) {
    const auto offset = std::min(static_cast<std::size_t>(result.offset), text.size());
    return Message{ICLogger::Level::Error, std::string("Error parsing timezone mapping document: ") +
                                               result.description() + " at " +
                                               std::string(text.substr(offset))};
}

std::optional<Message> ReadDocument(std::string_view text, Zones& zones) {
    pugi::xml_document document;
    // As a fragment a document without elements is one that lacks the first of the steps.
    const auto result = document.load_buffer(text.data(), text.size(),
                                             pugi::parse_default | pugi::parse_fragment, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result) return ParseError(result, text);
    pugi::xml_node element = document;
    for (const auto& step : kSteps) {
        element = element.child(step.name);
        if (!element) return Message{ICLogger::Level::Error, step.missing};
    }
    AddZones(element, zones);
    return std::nullopt;
}

std::optional<Message> Load(TimeZoneMapper::Source source, Zones& zones) {
    const auto document = source();
    if (document) return ReadDocument(*document, zones);
    return Message{ICLogger::Level::Warn, "Cannot load embedded resource for Windows timezone mappings"};
}

}  // namespace

std::string TimeZoneMapper::Map(const std::string& name) {
    std::optional<Message> failure;  // logged when the mutex is free again
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isLoadAttempted) {
            Zones zones;
            failure = Load(m_source, zones);  // one that throws for lack of memory is tried again
            m_zones = std::move(zones);
            m_isLoadAttempted = true;
        }
        const auto zone = m_zones.find(name);
        if (zone != m_zones.end()) return zone->second;
    }
    if (failure) Log(*failure);
    Log({ICLogger::Level::Warn, "TimeZoneMapper does not contain the string '" + name + "'"});
    return {};
}

std::string DateTimeUtils::MapWindowsTimezoneToIana(const std::string& name) {
    // Never destroyed: threads may ask while the process ends.
    static TimeZoneMapper& mapper =
        *new TimeZoneMapper([] { return platform::EmbeddedResource("XML", 103); });
    return mapper.Map(name);
}

}  // namespace quillon
