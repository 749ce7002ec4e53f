#pragma once

#include "quillon/DataTable.h"
#include "quillon/Export.h"

namespace quillon {

/// Returns what the process costs now: columns Name, Value (an integer) and Unit, a row a
/// figure: resident and private memory, CPU time in user and in kernel mode, threads,
/// handles, log lines that no file took, copies of them that the console did not take,
/// bytes written to log files, roll-overs that were refused, the code of the log file's
/// last error, look-ups of names that the system still works on, calls of WMI that were left
/// behind and still run, and the sizes of the library's caches. A figure that the system does
/// not tell, and the error when there was none, has a null value. Thread-safe; nothing is logged.
QUILLON_API DataTable SelfMetrics();

}  // namespace quillon
