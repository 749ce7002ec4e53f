#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quillon/IMethodMetadata.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon::agent {

/// Turns "name=value" texts, each with a '=', into the parameters of a call.
///
/// The type that the method declares decides how a value is read: an integer, a
/// float, a boolean (true, false, 1 or 0), a text, or a datetime in ISO 8601 (UTC
/// without a zone). A value that cannot be read so, and any given for a table, sets
/// code 2 and a message and gives false. A name that the method does not declare
/// stays, as a text: it is the method's binder that judges the call.
bool ReadParameters(const std::vector<std::string>& arguments, const IMethodMetadataReader& method,
                    MethodParameters& parameters, InvocationResult& result);

/// Does the same for a call among whose parameters, by their names, the caller has found faults already: the
/// message tells these first, then those of the other parameters.
bool ReadParameters(const std::vector<std::string>& arguments,
                    const std::map<std::string, std::string>& found, const IMethodMetadataReader& method,
                    MethodParameters& parameters, InvocationResult& result);

/// Reads one value of a type ("integer", "float", "boolean", "datetime"; else a text) as ReadParameters()
/// does; nothing when it cannot be read.
std::optional<Variant> ReadValue(const std::string& name, std::string_view type, const std::string& text);

}  // namespace quillon::agent
