#pragma once

namespace quillon {

/// The banner of a new log file: the identification of the agent, the settings that help to read the log,
/// and the report on the device; each of the last two only when the host has registered the service.

/// Values what the banner needs of the system while no appender's lock is held. Call it before there is an
/// appender that may roll over.
void PrepareRollOverBanner();

/// Writes the banner to the registered logger, if any. A service that throws ends its own report only,
/// with an Error entry.
void WriteRollOverBanner();

}  // namespace quillon
