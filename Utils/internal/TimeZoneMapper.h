#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillon {

/// The IANA zone of every Windows zone, from a windowsZones document of the Unicode
/// CLDR, which the first look-up reads. Thread-safe.
class TimeZoneMapper {
public:
    /// Gives the document; nothing when it cannot be had.
    using Source = std::optional<std::string_view> (*)();

    explicit TimeZoneMapper(Source source) : m_source(source) {}

    /// The empty text and a Warn entry when the name is unknown. A document that
    /// cannot be used is reported once; every name is unknown then.
    std::string Map(const std::string& name);

private:
    const Source m_source;
    std::mutex m_mutex;
    bool m_isLoadAttempted = false;
    std::unordered_map<std::string, std::string> m_zones;
};

}  // namespace quillon
