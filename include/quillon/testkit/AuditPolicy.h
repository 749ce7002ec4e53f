#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "quillon/UniqueIdentifier.h"

namespace quillon::testkit {

/// Is the system's audit policy in memory, in the place of the system's for its life: SystemAuditProxy and
/// AuditHolder reach it, on Windows and on Linux, and every privilege can be had. Nothing is audited at
/// first. There is one at a time. Thread-safe, but for its beginning and end, when nothing may be held.
///
/// @code
/// testkit::AuditPolicy policy;
/// const AuditHolder holder(logon);  // a UniqueIdentifier
/// EXPECT_TRUE(policy.IsAudited(logon));
/// policy.Set(logon, false, false);  // a policy refresh, after which the library switches it on again
/// policy.AwaitQuiet();
/// EXPECT_TRUE(policy.IsAudited(logon));
/// @endcode
class AuditPolicy {
public:
    AuditPolicy();
    ~AuditPolicy();
    AuditPolicy(const AuditPolicy&) = delete;
    AuditPolicy& operator=(const AuditPolicy&) = delete;

    /// Sets what of a sub-category is audited, as a policy refresh does; the library is notified.
    void Set(const UniqueIdentifier& subcategory, bool success, bool failure);
    /// Returns whether success and failure are both audited.
    bool IsAudited(const UniqueIdentifier& subcategory) const;
    /// Lets the next call of "AuditQuerySystemPolicy", "AuditSetSystemPolicy" or "setPrivilege" fail with a
    /// Windows code, once.
    void FailNext(const std::string& call, std::uint32_t code);
    /// Waits until the library has dealt with every notification.
    void AwaitQuiet();
    /// Returns how many records, tokens and registrations the library has not given back.
    std::size_t CountLeftOver() const;
};

}  // namespace quillon::testkit
