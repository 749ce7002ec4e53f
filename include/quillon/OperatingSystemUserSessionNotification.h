#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quillon/Export.h"
#include "quillon/IOperatingSystemNotification.h"

namespace quillon {

class ICLogger;

class QUILLON_API OperatingSystemUserSessionNotification : public IOperatingSystemNotification {
public:
    enum UserSessionNotificationType : std::int32_t {
        LocalConnect = 0,
        LocalDisconnect = 1,
        RemoteConnect = 2,
        RemoteDisconnect = 3,
        UserLogOn = 4,
        UserLogOff = 5,
        Locked = 6,
        Unlock = 7,
        RemoteControl = 8,
        Unknown = 9
    };

    /// From the arguments of a service control handler; `eventData` is the system's
    /// session-change record (its size, then the session's identifier, 32 bits each; null gives session
    /// 0). Logged at Debug, an unknown event type at Warn. A control other than 14 (a
    /// session change) is logged and throws std::invalid_argument.
    OperatingSystemUserSessionNotification(unsigned long control, unsigned long eventType, void* eventData,
                                           void* context);
    ~OperatingSystemUserSessionNotification() override;

    UserSessionNotificationType GetUserSessionNotificationType() const;
    /// When it was made from the control: seconds since 1970, UTC.
    long long GetTimestamp() const;
    unsigned long GetSessionId() const;
    /// Of a logon: what the host's terminal services service says, empty when it throws.
    /// Otherwise "<unknown-user>". `logErrors` has the reason logged.
    std::wstring GetSessionDomainUser(bool logErrors) const;
    /// The enumerator's name, "unknown" for Unknown.
    std::string EventToString() const;
    std::shared_ptr<IOperatingSystemNotification> Clone() const override;

private:
    OperatingSystemUserSessionNotification(const OperatingSystemUserSessionNotification& other);
    void CreateFromServiceControlSessionNotification(unsigned long control, unsigned long eventType,
                                                     void* eventData, void* context);
    void LogEvent() const;

    UserSessionNotificationType m_sessionType = Unknown;
    std::int64_t m_timestamp;
    ICLogger* m_logger;
    std::uint32_t m_sessionId = 0;
};

}  // namespace quillon
