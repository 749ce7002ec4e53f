#include "Utils/internal/TimeZoneMapper.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <pugixml.hpp>
#include <utility>

#include "platform/KeptError.h"
#include "platform/ResourceApi.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {
namespace {

/// IANA zones as systems name them today, and the other name by which the document has them (file "backward"
/// of the IANA time zone database).
constexpr std::pair<std::string_view, std::string_view> kRenamed[] = {
    {"Africa/Asmara", "Africa/Asmera"},
    {"America/Argentina/Buenos_Aires", "America/Buenos_Aires"},
    {"America/Argentina/Catamarca", "America/Catamarca"},
    {"America/Argentina/Cordoba", "America/Cordoba"},
    {"America/Argentina/Jujuy", "America/Jujuy"},
    {"America/Argentina/Mendoza", "America/Mendoza"},
    {"America/Atikokan", "America/Coral_Harbour"},
    {"America/Indiana/Indianapolis", "America/Indianapolis"},
    {"America/Kentucky/Louisville", "America/Louisville"},
    {"America/Nuuk", "America/Godthab"},
    {"Asia/Ho_Chi_Minh", "Asia/Saigon"},
    {"Asia/Kathmandu", "Asia/Katmandu"},
    {"Asia/Kolkata", "Asia/Calcutta"},
    {"Asia/Yangon", "Asia/Rangoon"},
    {"Atlantic/Faroe", "Atlantic/Faeroe"},
    {"Etc/UTC", "Etc/GMT"},
    {"Europe/Kyiv", "Europe/Kiev"},
    {"GMT", "Etc/GMT"},
    {"Pacific/Chuuk", "Pacific/Truk"},
    {"Pacific/Kanton", "Pacific/Enderbury"},
    {"Pacific/Pohnpei", "Pacific/Ponape"},
    {"UTC", "Etc/GMT"},
};

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

std::string TerritorialKey(const std::string& zone, std::string_view territory) {
    return zone + '/' + std::string(territory);
}

/// Adds a list of IANA zones, which blanks separate.
void AddIanaZones(std::string_view list, const std::string& windowsZone, ZoneTable& table) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        if (end > 0) table.windowsOfIana.emplace(list.substr(0, end), windowsZone);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
}

/// Reads the entries from the first "mapZone" on. The first entry of a zone counts, in its territory the
/// first of its IANA zones.
void AddZones(pugi::xml_node entry, ZoneTable& table) {
    for (; entry; entry = entry.next_sibling("mapZone")) {
        const auto windowsZone = entry.attribute("other");
        const auto ianaZones = entry.attribute("type");
        const std::string_view territory = entry.attribute("territory").value();  // "" without one
        if (territory.empty() || !windowsZone || !ianaZones) continue;
        const std::string_view list = ianaZones.value();
        AddIanaZones(list, windowsZone.value(), table);
        if (territory == "001")
            table.world.emplace(windowsZone.value(), list);
        else
            table.territorial.emplace(TerritorialKey(windowsZone.value(), territory),
                                      list.substr(0, list.find(' ')));
    }
}

/// The message of a document that cannot be parsed, with the text from the error on.
Message ParseError(const pugi::xml_parse_result& result, std::string_view text) {
    const auto offset = std::min(static_cast<std::size_t>(result.offset), text.size());
    return Message{ICLogger::Level::Error, std::string("Error parsing timezone mapping document: ") +
                                               result.description() + " at " +
                                               std::string(text.substr(offset))};
}

std::optional<Message> ReadDocument(std::string_view text, ZoneTable& zones) {
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

std::optional<Message> Load(TimeZoneMapper::Source source, ZoneTable& zones) {
    const auto document = source();
    if (document) return ReadDocument(*document, zones);
    return Message{ICLogger::Level::Warn, "Cannot load embedded resource for Windows timezone mappings"};
}

/// Never destroyed: threads may ask while the process ends.
TimeZoneMapper& TheMapper() {
    static TimeZoneMapper& mapper =
        *new TimeZoneMapper([] { return platform::EmbeddedResource("XML", 103); });
    return mapper;
}

}  // namespace

/// A name in one of the columns of a table.
struct TimeZoneMapper::Question {
    ZoneTable::Names ZoneTable::*column;
    std::string name;
};

std::optional<std::string> TimeZoneMapper::Find(const Question& question) const {
    for (const ZoneTable* const table : {&m_overrides, &m_zones}) {
        const auto& names = table->*question.column;
        if (const auto zone = names.find(question.name); zone != names.end()) return zone->second;
    }
    return std::nullopt;
}

/// Returns the answer to the first of the questions that has one; `name` is told when none has.
std::string TimeZoneMapper::Answer(std::initializer_list<Question> questions, const std::string& name) {
    std::optional<Message> failure;  // logged when the mutex is free again
    std::optional<std::string> zone;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isLoadAttempted) {
            ZoneTable zones;
            failure = Load(m_source, zones);  // one that throws for lack of memory is tried again
            m_zones = std::move(zones);
            m_isLoadAttempted = true;
        }
        for (const Question& question : questions)
            if ((zone = Find(question))) break;
    }
    if (failure) Log(*failure);
    if (zone) return *std::move(zone);
    Log({ICLogger::Level::Warn, "TimeZoneMapper does not contain the string '" + name + "'"});
    return {};
}

std::string TimeZoneMapper::Map(const std::string& name) { return Answer({{&ZoneTable::world, name}}, name); }

std::string TimeZoneMapper::Map(const std::string& name, const std::string& territory) {
    return Answer({{&ZoneTable::territorial, TerritorialKey(name, territory)}, {&ZoneTable::world, name}},
                  name);
}

std::string TimeZoneMapper::MapBack(const std::string& name) {
    const auto* const renamed = std::find_if(std::begin(kRenamed), std::end(kRenamed),
                                             [&name](const auto& each) { return each.first == name; });
    const std::string former(renamed == std::end(kRenamed) ? name : renamed->second);
    return Answer({{&ZoneTable::windowsOfIana, name}, {&ZoneTable::windowsOfIana, former}}, name);
}

bool TimeZoneMapper::Override(std::string_view document) {
    ZoneTable zones;
    if (const auto failure = ReadDocument(document, zones)) {
        Log(*failure);
        return false;
    }
    const std::lock_guard lock(m_mutex);
    std::swap(m_overrides, zones);
    return true;
}

std::string DateTimeUtils::MapWindowsTimezoneToIana(const std::string& name) { return TheMapper().Map(name); }

std::string DateTimeUtils::MapWindowsTimezoneToIana(const std::string& name, const std::string& territory) {
    return TheMapper().Map(name, territory);
}

std::string DateTimeUtils::MapIanaTimezoneToWindows(const std::string& name) {
    return TheMapper().MapBack(name);
}

bool DateTimeUtils::OverrideTimezones(const std::string& path) {
    constexpr std::uint64_t kMostBytes = 4 << 20;  // the CLDR's own has 50 KiB
    std::string document;
    auto encoding = FileSystemUtils::NOTSET;
    if (FileSystemUtils::ReadFileLimited(path, kMostBytes, document, encoding, FileSystemUtils::NOTSET)) {
        return TheMapper().Override(document);
    }
    const platform::KeptError reason;
    Log({ICLogger::Level::Error, "Could not read the timezone mapping document '" + path +
                                     "' because: " + StringUtils::GetLastErrorAsString()});
    return false;
}

}  // namespace quillon
