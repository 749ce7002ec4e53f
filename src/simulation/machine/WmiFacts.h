#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/Characters.h"
#include "simulation/wmi/WmiRepository.h"

namespace quillon::simulation {

/// The machine as WMI's classes tell of it. What the system does not tell is NULL.

/// Holds one fact of the machine, or nothing for NULL. Texts are UTF-8, a CIM_DATETIME is microseconds
/// since 1970, UTC.
class WmiFact {
public:
    WmiFact() = default;
    WmiFact(bool value) : m_value(value) {}
    WmiFact(const char* value) : m_value(std::string(value)) {}
    WmiFact(std::string value) : m_value(std::move(value)) {}
    /// An array of texts; NULL when it is empty.
    WmiFact(std::vector<std::string> values) {
        if (!values.empty()) m_value = std::move(values);
    }
    template <std::integral Integer>
    WmiFact(Integer value) : m_value(static_cast<std::int64_t>(value)) {}
    template <class T>
    WmiFact(const std::optional<T>& value) {
        if (value) *this = WmiFact(*value);
    }

    /// Returns the fact as WMI holds a value of this type; NULL when it does not fit the type.
    [[nodiscard]] _variant_t As(CIMTYPE type) const;

private:
    std::variant<std::monostate, bool, std::int64_t, std::string, std::vector<std::string>> m_value;
};

/// A property of a class whose instances stand for a Subject; without `read` it is always NULL.
template <class Subject>
struct WmiFactReader {
    using Read = std::function<WmiFact(Subject&)>;

    WmiFactReader(const wchar_t* propertyName, CIMTYPE propertyType)
        : name(propertyName), type(propertyType) {}
    WmiFactReader(const wchar_t* propertyName, CIMTYPE propertyType, Read reader)
        : name(propertyName), type(propertyType), read(std::move(reader)) {}

    const wchar_t* name;
    CIMTYPE type;
    Read read;
};

/// A live class. Of each query's instances only what is wanted is read, and the keys.
template <class Subject>
WmiClass MakeLiveClass(const wchar_t* name, std::vector<std::wstring> keys,
                       std::vector<WmiFactReader<Subject>> readers,
                       std::function<std::vector<Subject>()> list) {
    WmiClass made{name, {}, std::move(keys)};
    for (const auto& reader : readers) made.properties.push_back({reader.name, reader.type, {}});
    const auto has = [](const std::vector<std::wstring>& names, std::wstring_view wanted) {
        return std::any_of(names.begin(), names.end(), [wanted](const std::wstring& each) {
            return base::EqualIgnoringCase(std::wstring_view(each), wanted);
        });
    };
    made.live = [readers = std::move(readers), list = std::move(list), keyNames = made.keys,
                 has](const std::vector<std::wstring>& wanted) {
        std::vector<const WmiFactReader<Subject>*> chosen;
        for (const auto& reader : readers) {
            const bool isWanted = wanted.empty() || has(wanted, reader.name) || has(keyNames, reader.name);
            if (reader.read && isWanted) chosen.push_back(&reader);
        }
        std::vector<WmiValues> rows;
        for (Subject& subject : list()) {
            WmiValues& row = rows.emplace_back();
            for (const auto* reader : chosen)
                row.emplace_back(reader->name, reader->read(subject).As(reader->type));
        }
        return rows;
    };
    return made;
}

WmiClass OperatingSystemClass();
WmiClass ComputerSystemClass();
WmiClass ProcessClass();
/// The volume "C:", and other local and network volumes by the place they are mounted at.
WmiClass LogicalDiskClass();
WmiClass NetworkAdapterClass();
/// Addresses by the interface that has them.
WmiClass NetworkAdapterConfigurationClass();
/// The units of systemd and the init scripts that no unit replaces; by their files and control groups, so
/// that a unit that stays active without a process counts as stopped.
WmiClass ServiceClass();

WmiClass BiosClass();
/// The local accounts.
WmiClass UserAccountClass();
WmiClass QuickFixEngineeringClass();

/// Adds all classes of facts, in ROOT\CIMV2.
void AddMachineFacts(WmiRepository& repository);

// --- What several of them tell ---

std::string NodeName();
/// A file of /proc or /sys without the line's end; nothing when it cannot be read or is empty.
std::optional<std::string> ReadFact(const std::string& path);
/// Returns whether an errno says that something is not there, or not for this account.
bool IsGoneOrForeign(int error);
/// Returns the names in a directory; none when it is not there or not for this account. Throws when the
/// system refuses the list: what is left out would seem not to be there.
std::vector<std::string> NamesWithin(const std::string& folder);
/// Returns a figure of /proc/meminfo in KiB; `label` includes the colon.
std::optional<long long> MemoryKilobytes(std::string_view label);
/// Returns when the system started, in microseconds since 1970.
std::optional<std::int64_t> BootTime();
std::int64_t CurrentTime();

}  // namespace quillon::simulation
