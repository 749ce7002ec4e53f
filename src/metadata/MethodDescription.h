#pragma once

#include <nlohmann/json.hpp>

#include "quillon/IMethodMetadata.h"

namespace quillon {

/// The object that ToJson() promises. Its texts are valid UTF-8; a null pointer is
/// an empty one.
nlohmann::ordered_json DescribeMethod(const IMethodMetadataReader& method);

}  // namespace quillon
