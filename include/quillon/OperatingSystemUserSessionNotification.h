#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quillon/Export.h"
#include "quillon/IOperatingSystemNotification.h"

namespace quillon {

/// Describes a change of a user's session.
///
/// @code
/// const std::uint32_t record[] = {8, 3};  // WTSSESSION_NOTIFICATION of session 3
/// const OperatingSystemUserSessionNotification logon(14, 5, const_cast<std::uint32_t*>(record), nullptr);
/// std::cout << logon.EventToString() << ' ' << logon.GetSessionId() << '\n';  // UserLogOn 3
/// @endcode
class QUILLON_API OperatingSystemUserSessionNotification : public IOperatingSystemNotification {
public:
    /// Says what happened. A value but the last is one below the system's event type: 1
    /// WTS_CONSOLE_CONNECT to 9 WTS_SESSION_REMOTE_CONTROL.
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

    /// Makes it from the arguments of a service control handler (HandlerEx). `eventData` is the system's
    /// WTSSESSION_NOTIFICATION (its size, then the session's identifier, 32 bits each), which is not
    /// kept; null gives session 0. Two Debug entries are logged on the registered logger, and one Warn
    /// entry for an unknown event type. A control other than 14, SERVICE_CONTROL_SESSIONCHANGE, is
    /// logged at Debug and throws std::invalid_argument with the same text.
    OperatingSystemUserSessionNotification(unsigned long control, unsigned long eventType, void* eventData,
                                           void* context);
    ~OperatingSystemUserSessionNotification() override;

    /// Returns what happened.
    UserSessionNotificationType GetUserSessionNotificationType() const;
    /// Returns when it was made from the control, in seconds since 1970, UTC; a copy keeps that time.
    long long GetTimestamp() const;
    /// Returns the identifier of the session.
    unsigned long GetSessionId() const;
    /// Returns, for a logon, what IWindowsTerminalServicesService says, in UTF-16, and the empty text
    /// when that throws a std::exception; for any other change, and without the service,
    /// "<unknown-user>". With `logErrors` the reason is logged, at Debug when it was thrown and at Warn
    /// otherwise.
    std::wstring GetSessionDomainUser(bool logErrors) const;
    /// Returns the enumerator's name, such as "UserLogOn"; "unknown" for Unknown.
    std::string EventToString() const;
    /// Returns a copy with the same time; nothing is logged.
    std::shared_ptr<IOperatingSystemNotification> Clone() const override;

private:
    OperatingSystemUserSessionNotification(const OperatingSystemUserSessionNotification& other);
    void CreateFromServiceControlSessionNotification(unsigned long control, unsigned long eventType,
                                                     void* eventData, void* context);
    void LogEvent() const;

    UserSessionNotificationType m_sessionType = Unknown;
    std::int64_t m_timestamp;
    std::uint32_t m_sessionId = 0;
};

}  // namespace quillon
