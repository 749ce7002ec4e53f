#pragma once

#include <cstdint>
#include <memory>

#include "quillon/Export.h"
#include "quillon/IOperatingSystemNotification.h"

namespace quillon {

class QUILLON_API OperatingSystemPowerNotification : public IOperatingSystemNotification {
public:
    enum PowerNotificationType : std::int32_t {
        SystemSuspending = 4,
        SystemResumed = 7,
        PowerSourceChanged = 10,
        SystemResumedFromHibernation = 12,
        Other = 14
    };

    /// From the arguments of a service control handler, logged at Debug. A control other
    /// than 13 (a power event) is logged and throws std::invalid_argument.
    OperatingSystemPowerNotification(unsigned long control, unsigned long eventType, void* eventData,
                                     void* context);
    ~OperatingSystemPowerNotification() override;

    PowerNotificationType GetPowerNotificationType() const;
    std::shared_ptr<IOperatingSystemNotification> Clone() const override;

private:
    explicit OperatingSystemPowerNotification(PowerNotificationType powerType);
    static PowerNotificationType CreateFromServiceControlPowerNotification(unsigned long control,
                                                                           unsigned long eventType,
                                                                           void* eventData, void* context);

    PowerNotificationType m_powerType;
};

}  // namespace quillon
