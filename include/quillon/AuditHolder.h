#pragma once

#include <new>
#include <optional>
#include <utility>

#include "quillon/SystemAuditProxy.h"

namespace quillon {

/// Holds a sub-category of the audit policy by SystemAuditProxy for its life, on any thread. It can be
/// moved and not copied.
///
/// @code
/// const AuditHolder holder(logon);  // a UniqueIdentifier
/// if (!holder) return false;  // the log says why
/// @endcode
class [[nodiscard]] AuditHolder {
public:
    AuditHolder() = default;
    /// Adds a holder; without success there is nothing to take away.
    explicit AuditHolder(const UniqueIdentifier& subcategory) {
        if (SystemAuditProxy::EnableAuditLogSubCategory(subcategory)) m_held = subcategory;
    }
    ~AuditHolder() { Release(); }
    AuditHolder(AuditHolder&& other) noexcept : m_held(std::exchange(other.m_held, std::nullopt)) {}
    AuditHolder& operator=(AuditHolder&& other) noexcept {
        if (this != &other) {
            Release();
            m_held = std::exchange(other.m_held, std::nullopt);
        }
        return *this;
    }
    AuditHolder(const AuditHolder&) = delete;
    AuditHolder& operator=(const AuditHolder&) = delete;

    /// Returns whether the sub-category is held.
    explicit operator bool() const noexcept { return m_held.has_value(); }
    /// Takes the holder away before its end. Without memory auditing may stay on; the record of
    /// SystemAuditProxy::KeepRecordIn() tells the next process.
    void Release() noexcept {
        try {
            if (const auto held = std::exchange(m_held, std::nullopt))
                SystemAuditProxy::DisableAuditLogSubCategory(*held);
        } catch (const std::bad_alloc&) {
        }
    }

private:
    std::optional<UniqueIdentifier> m_held;
};

}  // namespace quillon
