#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Describes a service control of the system, as the host hands it to modules. A notification is not
/// changed once it is made, so several threads may read it.
class QUILLON_API IOperatingSystemNotification {
public:
    /// Says which class a notification is of.
    enum NotificationType : std::int32_t { Shutdown = 1, Power = 2, UserSession = 3 };

    virtual ~IOperatingSystemNotification();
    /// Returns the type that the derived class was made with.
    virtual NotificationType GetNotificationType() const;
    /// Returns a sentence for people, such as "Operating System power notification".
    virtual std::string ToString() const;
    /// Returns a copy that the caller owns; nothing is logged.
    virtual std::shared_ptr<IOperatingSystemNotification> Clone() const = 0;

    /// Returns whether Equivalent() holds.
    bool operator==(const IOperatingSystemNotification& other) const;

protected:
    /// Makes a notification of that type.
    explicit IOperatingSystemNotification(NotificationType type);
    IOperatingSystemNotification(const IOperatingSystemNotification&) = default;
    IOperatingSystemNotification& operator=(const IOperatingSystemNotification&) = default;

    /// Returns whether both have the same notification type; a derived class may compare more.
    virtual bool Equivalent(const IOperatingSystemNotification& other) const;

private:
    NotificationType m_type;
};

}  // namespace quillon
