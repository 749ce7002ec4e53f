#include "quillon/OperatingSystemPowerNotification.h"

#include <stdexcept>
#include <string>

#include "quillon/ICLogger.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using Type = OperatingSystemPowerNotification::PowerNotificationType;

constexpr unsigned long kPowerControl = 13;  // SERVICE_CONTROL_POWEREVENT

struct PowerEvent {
    unsigned long eventType;
    const char* message;
    Type type;
};

constexpr PowerEvent kEvents[] = {
    {4, "ServiceControl received: System about enter a suspended state", Type::SystemSuspending},
    {7, "ServiceControl received: System resumed operation after being suspended", Type::SystemResumed},
    {10, "ServiceControl received: Power source change event is skipped", Type::PowerSourceChanged},
    {18, "ServiceControl received: System is resuming from hibernation", Type::SystemResumedFromHibernation},
    {32787, "ServiceControl received: Power change event is skipped", Type::SystemResumed},
};

void LogDebug(const std::string& text) {
    if (ICLogger* const logger = detail::RegisteredLogger()) logger->Debug("%s", text.c_str());
}

}  // namespace

OperatingSystemPowerNotification::OperatingSystemPowerNotification(unsigned long control,
                                                                   unsigned long eventType, void* eventData,
                                                                   void* context)
    : IOperatingSystemNotification(Power),
      m_powerType(CreateFromServiceControlPowerNotification(control, eventType, eventData, context)) {}

OperatingSystemPowerNotification::OperatingSystemPowerNotification(PowerNotificationType powerType)
    : IOperatingSystemNotification(Power), m_powerType(powerType) {}

OperatingSystemPowerNotification::~OperatingSystemPowerNotification() = default;

Type OperatingSystemPowerNotification::GetPowerNotificationType() const { return m_powerType; }

std::shared_ptr<IOperatingSystemNotification> OperatingSystemPowerNotification::Clone() const {
    return std::shared_ptr<IOperatingSystemNotification>(new OperatingSystemPowerNotification(m_powerType));
}

Type OperatingSystemPowerNotification::CreateFromServiceControlPowerNotification(unsigned long control,
                                                                                 unsigned long eventType,
                                                                                 void*, void*) {
    if (control != kPowerControl) {
        const std::string text = "OperatingSystemPowerNotification was given an unexpected control code: " +
                                 std::to_string(control) + " Event type: " + std::to_string(eventType);
        LogDebug(text);
        throw std::invalid_argument(text);
    }
    for (const PowerEvent& event : kEvents) {
        if (event.eventType != eventType) continue;
        LogDebug(event.message);
        return event.type;
    }
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Debug("OperatingSystemPowerNotification skipping control code: %d Event type: %d",
                      static_cast<int>(control), static_cast<int>(eventType));
    }
    return Other;
}

}  // namespace quillon
