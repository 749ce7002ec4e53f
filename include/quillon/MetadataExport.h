#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"

namespace quillon {

/// Returns the description of a method as one JSON object in UTF-8, on one line. An undocumented
/// method is written like any other: to leave it out is the caller's choice. Bytes that are not UTF-8
/// become U+FFFD; nothing is logged.
///
/// The members are, in this order: name, description, example, flags, warnings, notes, introduced (an
/// object: platform to version), deprecated (null, or version and text), undocumented,
/// parameters, columns, additionalParameters and additionalColumns (null or their
/// description). A parameter has name, type, optional, default (null without one, time
/// points as text, a table as an array of rows), description, warnings, notes,
/// introduced, deprecated. A column has alternative instead of optional and default.
QUILLON_API std::string ToJson(const IMethodMetadataReader& method);

/// Returns the same as Markdown (CommonMark with GitHub's tables): a second-level heading, the
/// description, a table of parameters, a table of
/// columns, the warnings, notes and versions, and the example. Marks of Markdown and HTML in a text
/// are escaped, so that a reader sees the text as it is.
QUILLON_API std::string ToMarkdown(const IMethodMetadataReader& method);

}  // namespace quillon
