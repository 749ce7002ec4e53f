#pragma once

#include <string>
#include <string_view>

namespace quillon::platform {

/// The logs that the system keeps itself. Each is of one system: on the other one a call fails with
/// base::kCallNotImplemented. The reason of a failure is in LastError().

/// Sends a datagram to the socket of a systemd journal, by its native path, without waiting.
bool SendToJournal(const std::string& socket, std::string_view datagram);

enum class EventKind { Information, Warning, Error };
/// Writes an entry to the log "Application" of the Windows event log.
bool ReportEntry(const std::string& source, EventKind kind, const std::string& text);

}  // namespace quillon::platform
