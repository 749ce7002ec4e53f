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

/// Describes one place of a document and the values that it may hold.
struct SettingRule {
    enum class Kind { Object, Array, Scalar };

    std::string_view pattern;
    Kind kind = Kind::Scalar;
    /// Stores a scalar and returns the empty text, or returns what kind of value is needed.
    const char* (*store)(AgentSettings&, const SettingPlace&, const SettingValue&) = nullptr;
};

/// Returns the rule of a place; null when no setting has it.
const SettingRule* FindSettingRule(std::string_view pattern);

}  // namespace quillon::agent
