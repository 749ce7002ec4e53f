#pragma once

#include <string>

#include "quillon/Export.h"
#include "quillon/UniqueIdentifier.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

class ICLogger;

/// Keeps success and failure auditing of sub-categories of the system's audit policy switched on while
/// somebody holds them, and switches it on again when a policy refresh has switched it off meanwhile;
/// the system reports such changes on a thread of its own. Thread-safe. Everything is logged on the
/// registered logger, at the end of an operation and with no lock held, so that a logger may call this
/// class. Without the system's audit functions nothing can be held, which is logged once, at Warn. The
/// calls need the privilege SeSecurityPrivilege, which is switched on for their time.
///
/// @code
/// bool ok = false;
/// const UniqueIdentifier logon = UniqueIdentifier::Parse("0CCE9215-69AE-11D9-BED3-505054503030", &ok);
/// if (ok && SystemAuditProxy::EnableAuditLogSubCategory(logon)) {
///     // logons are audited until this holder is taken away
///     SystemAuditProxy::DisableAuditLogSubCategory(logon);
/// }
/// @endcode
class QUILLON_API SystemAuditProxy {
public:
    SystemAuditProxy() = delete;

    /// Adds one holder of a sub-category and returns whether it is audited now. On a failure there is
    /// no holder, one Error entry says why, and the result is false; it is false as well for a holder
    /// past 2^32 - 1.
    [[nodiscard]] static bool EnableAuditLogSubCategory(const UniqueIdentifier& subcategory);
    /// Takes one holder away. After the last one auditing is switched off if this class has switched it
    /// on; a failure is an Error entry, and two Warn entries tell the administrator to review the
    /// policy. A sub-category without holders is left alone.
    static void DisableAuditLogSubCategory(const UniqueIdentifier& subcategory);
    /// Writes down, from now on, what this class switches on, in a file of the process alone, and restores
    /// what a former process, which was killed, had written there and not switched off: an Info entry
    /// each, or an Error entry, and the next start tries again. A record that cannot be written is a Warn
    /// entry, and auditing works without it. An empty path ends that.
    static void KeepRecordIn(const std::string& path);

private:
    static bool EnsureSystemAuditAvailable();
    static void RestoreAuditPolicy();
    static void WriteRecord();
    static void AuditPolicyChangedCallback(void* context, unsigned char timedOut);
    static void ReaffirmAuditPolicy();
    static void StartMonitoringAuditPolicyChanges();
    static void StopMonitoringAuditPolicyChanges();
    static bool GetAuditPolicyState(const windows::GUID& subcategory, unsigned long* state, ICLogger* logger);
    static bool SetAuditPolicyState(const windows::GUID& subcategory, const unsigned long& state,
                                    ICLogger* logger);
    static std::string GUIDToString(const windows::GUID& guid);
};

}  // namespace quillon
