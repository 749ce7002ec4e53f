#pragma once

#include <string>

namespace quillon::agent {

/// A name for a file in the making, new with every call.
std::string MakeTemporaryName();

}  // namespace quillon::agent
