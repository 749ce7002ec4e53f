#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"

namespace quillon {

/// A method's description in forms that others read. An undocumented method is
/// written like any other: leaving it out is the caller's choice. Bytes that are not
/// UTF-8 become U+FFFD; nothing is logged or thrown.

/// One object: name, description, example, flags, warnings, notes, introduced (an
/// object: platform to version), deprecated (null, or version and text), undocumented,
/// parameters, columns, additionalParameters and additionalColumns (null or their
/// description). A parameter: name, type, optional, default (null without one, time
/// points as text, a table as an array of rows), description, warnings, notes,
/// introduced, deprecated. A column has alternative instead of optional and default.
QUILLON_API std::string ToJson(const IMethodMetadataReader& method);

/// A second-level heading, the description, a table of parameters, a table of
/// columns, and whatever else is said of them (CommonMark with GitHub's tables).
QUILLON_API std::string ToMarkdown(const IMethodMetadataReader& method);

}  // namespace quillon
