#pragma once

#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillon {

/// Holds what a windowsZones document of the Unicode CLDR tells.
struct ZoneTable {
    using Names = std::unordered_map<std::string, std::string>;

    Names world;          ///< the IANA zone of each Windows zone
    Names territorial;    ///< the same for a territory; the keys are "ZONE/TERRITORY"
    Names windowsOfIana;  ///< the Windows zone of each IANA zone
};

/// Maps Windows zones to IANA zones and back, by a windowsZones document, which the first look-up reads, and
/// by one that overrides it. Thread-safe.
class TimeZoneMapper {
public:
    /// Gives the document; nothing when it cannot be had.
    using Source = std::optional<std::string_view> (*)();

    explicit TimeZoneMapper(Source source) : m_source(source) {}

    /// The empty text and a Warn entry when the name is unknown. A document that
    /// cannot be used is reported once; every name is unknown then.
    std::string Map(const std::string& name);
    /// The zone of a territory, else that of Map().
    std::string Map(const std::string& name, const std::string& territory);
    /// The Windows zone of an IANA zone; failures as in Map().
    std::string MapBack(const std::string& name);
    /// Replaces the overriding document. False, with an Error entry and without a change, when it cannot be
    /// used.
    bool Override(std::string_view document);

private:
    struct Question;

    std::string Answer(std::initializer_list<Question> questions, const std::string& name);
    std::optional<std::string> Find(const Question& question) const;

    const Source m_source;
    std::mutex m_mutex;
    bool m_isLoadAttempted = false;
    ZoneTable m_zones, m_overrides;
};

}  // namespace quillon
