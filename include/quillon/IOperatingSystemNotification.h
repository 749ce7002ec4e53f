#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// A service control of the system, as the host hands it to modules.
class QUILLON_API IOperatingSystemNotification {
public:
    enum NotificationType : std::int32_t { Shutdown = 1, Power = 2, UserSession = 3 };

    virtual ~IOperatingSystemNotification();
    virtual NotificationType GetNotificationType() const;
    /// For people.
    virtual std::string ToString() const;
    /// Logs nothing.
    virtual std::shared_ptr<IOperatingSystemNotification> Clone() const = 0;

    bool operator==(const IOperatingSystemNotification& other) const;

protected:
    explicit IOperatingSystemNotification(NotificationType type);
    IOperatingSystemNotification(const IOperatingSystemNotification&) = default;
    IOperatingSystemNotification& operator=(const IOperatingSystemNotification&) = default;

    /// Of the same notification type.
    virtual bool Equivalent(const IOperatingSystemNotification& other) const;

private:
    NotificationType m_type;
};

}  // namespace quillon
