#pragma once

#include <cstdint>
#include <memory>

#include "quillon/Export.h"
#include "quillon/IOperatingSystemNotification.h"

namespace quillon {

/// Describes a power event of the system.
///
/// @code
/// // In a service control handler, for SERVICE_CONTROL_POWEREVENT and PBT_APMSUSPEND:
/// const OperatingSystemPowerNotification suspending(13, 4, nullptr, nullptr);
/// if (suspending.GetPowerNotificationType() == OperatingSystemPowerNotification::SystemSuspending)
///     std::cout << suspending.ToString() << '\n';
/// @endcode
class QUILLON_API OperatingSystemPowerNotification : public IOperatingSystemNotification {
public:
    /// Says what happened. The numbers are the agent's own, not those of the system's event types.
    enum PowerNotificationType : std::int32_t {
        SystemSuspending = 4,
        SystemResumed = 7,
        PowerSourceChanged = 10,
        SystemResumedFromHibernation = 12,
        Other = 14
    };

    /// Makes it from the arguments of a service control handler (HandlerEx), of which the last two are
    /// not used, and logs one Debug entry on the registered logger. Event types are 4 PBT_APMSUSPEND, 7
    /// PBT_APMRESUMESUSPEND, 10 PBT_APMPOWERSTATUSCHANGE, 18 PBT_APMRESUMEAUTOMATIC (resumed from
    /// hibernation) and 32787 PBT_POWERSETTINGCHANGE (counted as resumed); any other is Other. A control
    /// other than 13, SERVICE_CONTROL_POWEREVENT, throws std::invalid_argument with the entry's text.
    OperatingSystemPowerNotification(unsigned long control, unsigned long eventType, void* eventData,
                                     void* context);
    ~OperatingSystemPowerNotification() override;

    /// Returns what happened.
    PowerNotificationType GetPowerNotificationType() const;
    /// Returns a copy; nothing is logged.
    std::shared_ptr<IOperatingSystemNotification> Clone() const override;

private:
    explicit OperatingSystemPowerNotification(PowerNotificationType powerType);
    static PowerNotificationType CreateFromServiceControlPowerNotification(unsigned long control,
                                                                           unsigned long eventType,
                                                                           void* eventData, void* context);

    PowerNotificationType m_powerType;
};

}  // namespace quillon
