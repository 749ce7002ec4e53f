#pragma once

#include <ostream>
#include <string>

#include "quillon/DataTable.h"

namespace quillon::agent {

/// Writes a table as OpenMetrics: each column of numbers (booleans are 0 and 1, points in time seconds since
/// 1970) is a gauge "quillon_MODULE_METHOD_COLUMN", and the texts of a row that are not empty are the labels
/// of its samples. The rows of a table with a text "Name" and a number "Value" are gauges of those names. A
/// null has no sample; rows with the same labels, in whatever order, are told apart by the label "row". Of
/// columns of a row whose names become equal the second gets "_2" behind it, and so on; a text column "Row"
/// is "row_2".
void WriteOpenMetrics(std::ostream& stream, const DataTable& table, const std::string& method);

}  // namespace quillon::agent
