#pragma once

#include <ostream>

#include "quillon/DataTable.h"

namespace quillon::agent {

/// Writes a line "name = value" for each cell, and an empty line between two rows. Control characters are
/// written as escapes.
void WriteLines(std::ostream& stream, const DataTable& table);

}  // namespace quillon::agent
