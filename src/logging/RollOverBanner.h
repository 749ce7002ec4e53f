#pragma once

namespace quillon {

/// What a log file begins with after a roll-over: the identification, the settings that matter
/// when reading the log, and the device report, each of the last two when the host has the service.

/// Values what the banner needs of the system while no appender's lock is held. Call it before there is an
/// appender that may roll over.
void PrepareRollOverBanner();

/// Writes the banner to the registered logger, if any. A service that throws ends its own report only,
/// with an Error entry.
void WriteRollOverBanner();

}  // namespace quillon
