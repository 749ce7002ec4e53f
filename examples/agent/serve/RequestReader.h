#pragma once

#include <map>
#include <string>
#include <string_view>

#include "serve/RequestValue.h"

namespace quillon::agent {

/// Reads the members of a JSON object, and those of the objects in it. No document is made of it: one of
/// the JSON library asks for memory when it is destroyed, and ends the process when there is none.
struct RequestMembers {
    using Values = std::map<std::string, RequestValue>;

    Values values;                          ///< the last of each name
    std::map<std::string, Values> objects;  ///< the members of values that are objects

    /// Returns what is wrong with the line for people, or the empty text.
    std::string Read(std::string_view line);
};

/// Returns a text as JSON; what is no UTF-8 in it becomes U+FFFD.
std::string JsonText(const std::string& text);

}  // namespace quillon::agent
