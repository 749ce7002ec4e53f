#include "quillon/IOperatingSystemNotification.h"

namespace quillon {

IOperatingSystemNotification::IOperatingSystemNotification(NotificationType type) : m_type(type) {}
IOperatingSystemNotification::~IOperatingSystemNotification() = default;

IOperatingSystemNotification::NotificationType IOperatingSystemNotification::GetNotificationType() const {
    return m_type;
}

std::string IOperatingSystemNotification::ToString() const {
    switch (m_type) {
        case Shutdown:
            return "Operating System shutdown notification";
        case Power:
            return "Operating System power notification";
        case UserSession:
            return "Operating System user session notification";
    }
    return "Operating System unknown notification";
}

bool IOperatingSystemNotification::operator==(const IOperatingSystemNotification& other) const {
    return Equivalent(other);
}

bool IOperatingSystemNotification::Equivalent(const IOperatingSystemNotification& other) const {
    return GetNotificationType() == other.GetNotificationType();
}

}  // namespace quillon
