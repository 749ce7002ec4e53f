#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "host/ConfigurationReader.h"

namespace quillon::agent {

using SettingValue = std::variant<std::nullptr_t, bool, long long, double, std::string>;

/// Where a value stands in the document, and its names on the way.
struct SettingPlace {
    std::string pattern;      ///< "switches[].port"; "*" for a name of the writer's choice
    std::string path;         ///< "switches[0].port", for people
    std::string module, key;  ///< the names that "*" stood for, and the last one
};

/// What a document may hold at a place.
struct SettingRule {
    enum class Kind { Object, Array, Scalar };

    std::string_view pattern;
    Kind kind = Kind::Scalar;
    /// What the value must be, "" when it is that and was stored; of scalars only.
    const char* (*store)(AgentSettings&, const SettingPlace&, const SettingValue&) = nullptr;
};

/// Null for a place that no setting has.
const SettingRule* FindSettingRule(std::string_view pattern);

}  // namespace quillon::agent
