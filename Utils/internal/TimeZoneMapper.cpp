#include "Utils/internal/TimeZoneMapper.h"

#include <memory>
#include <rapidxml/rapidxml.hpp>
#include <utility>

#include "platform/ResourceApi.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {
namespace {

using Element = rapidxml::xml_node<char>;
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

std::optional<std::string_view> Attribute(const Element& element, const char* name) {
    const auto* const attribute = element.first_attribute(name);
    if (attribute == nullptr) return std::nullopt;
    return std::string_view(attribute->value(), attribute->value_size());
}

/// Reads the entries from the first "mapZone" on. The first entry of a zone counts.
void AddZones(const Element* entry, Zones& zones) {
    for (; entry != nullptr; entry = entry->next_sibling("mapZone")) {
        const auto territory = Attribute(*entry, "territory");
        const auto windowsZone = Attribute(*entry, "other");
        const auto ianaZone = Attribute(*entry, "type");
        if (territory == "001" && windowsZone && ianaZone) zones.emplace(*windowsZone, *ianaZone);
    }
}

std::optional<Message> ReadDocument(std::string text, Zones& zones) {
    const auto document = std::make_unique<rapidxml::xml_document<char>>();  // large for a stack
    try {
        document->parse<0>(text.data());
    } catch (const rapidxml::parse_error& error) {
        return Message{ICLogger::Level::Error, std::string("Error parsing timezone mapping document: ") +
                                                   error.what() + " at " + error.where<char>()};
    }
    const Element* element = document.get();
    for (const auto& step : kSteps) {
        element = element->first_node(step.name);
        if (element == nullptr) return Message{ICLogger::Level::Error, step.missing};
    }
    AddZones(element, zones);
    return std::nullopt;
}

std::optional<Message> Load(TimeZoneMapper::Source source, Zones& zones) {
    const auto document = source();
    if (document) return ReadDocument(std::string(*document), zones);
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
