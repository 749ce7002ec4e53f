#include "quillon/OperatingSystemUserSessionNotification.h"

#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <stdexcept>

#include "base/TextOrEmpty.h"
#include "quillon/ICLogger.h"
#include "quillon/IWindowsTerminalServicesService.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using Type = OperatingSystemUserSessionNotification::UserSessionNotificationType;

constexpr unsigned long kSessionControl = 14;  // SERVICE_CONTROL_SESSIONCHANGE
constexpr const wchar_t* kUnknownUser = L"<unknown-user>";

/// Names the enumerators in their order; the system's event types are one higher.
constexpr const char* kNames[] = {"LocalConnect",     "LocalDisconnect", "RemoteConnect",
                                  "RemoteDisconnect", "UserLogOn",       "UserLogOff",
                                  "Locked",           "Unlock",          "RemoteControl"};

/// Has the layout of WTSSESSION_NOTIFICATION.
struct SessionChange {
    std::uint32_t size;
    std::uint32_t sessionId;
};

Type SessionEventType(unsigned long eventType, ICLogger* logger) {
    if (eventType >= 1 && eventType <= std::size(kNames)) return static_cast<Type>(eventType - 1);
    if (logger != nullptr) {
        logger->Warn("OperatingSystemUserSessionNotification received eventType %d, which is unknown",
                     static_cast<int>(eventType));
    }
    return Type::Unknown;
}

std::uint32_t SessionIdIn(const void* eventData) {
    SessionChange record{};
    if (eventData != nullptr) std::memcpy(&record, eventData, sizeof record);
    return record.sessionId;
}

}  // namespace

OperatingSystemUserSessionNotification::OperatingSystemUserSessionNotification(unsigned long control,
                                                                               unsigned long eventType,
                                                                               void* eventData, void* context)
    : IOperatingSystemNotification(UserSession), m_timestamp(std::time(nullptr)) {
    CreateFromServiceControlSessionNotification(control, eventType, eventData, context);
}

OperatingSystemUserSessionNotification::OperatingSystemUserSessionNotification(
    const OperatingSystemUserSessionNotification&) = default;

OperatingSystemUserSessionNotification::~OperatingSystemUserSessionNotification() = default;

Type OperatingSystemUserSessionNotification::GetUserSessionNotificationType() const { return m_sessionType; }

long long OperatingSystemUserSessionNotification::GetTimestamp() const { return m_timestamp; }

unsigned long OperatingSystemUserSessionNotification::GetSessionId() const { return m_sessionId; }

std::wstring OperatingSystemUserSessionNotification::GetSessionDomainUser(bool logErrors) const {
    ICLogger* const logger = detail::RegisteredLogger();
    ICLogger* const errors = logErrors ? logger : nullptr;
    if (m_sessionType != UserLogOn) {
        if (errors != nullptr) errors->Warn("Cannot get domain user for a logged out user");
        return kUnknownUser;
    }
    auto* const service = ServiceLocator::Get<IWindowsTerminalServicesService>();
    if (logger != nullptr)
        logger->Trace("windowsTerminalServicesService %p", static_cast<const void*>(service));
    if (service == nullptr) {
        if (errors != nullptr) errors->Warn("Unable to locate the windowsTerminalServicesService object");
        return kUnknownUser;
    }
    try {
        return service->GetDomainUserForSession(m_sessionId);
    } catch (const std::exception& error) {
        if (errors != nullptr)
            errors->Debug("exception [%s]", LogText::OneLine(base::TextOrEmpty(error.what())).c_str());
        return {};
    }
}

std::string OperatingSystemUserSessionNotification::EventToString() const {
    const auto index = static_cast<std::size_t>(m_sessionType);
    return index < std::size(kNames) ? kNames[index] : "unknown";
}

std::shared_ptr<IOperatingSystemNotification> OperatingSystemUserSessionNotification::Clone() const {
    return std::shared_ptr<IOperatingSystemNotification>(new OperatingSystemUserSessionNotification(*this));
}

void OperatingSystemUserSessionNotification::CreateFromServiceControlSessionNotification(
    unsigned long control, unsigned long eventType, void* eventData, void*) {
    ICLogger* const logger = detail::RegisteredLogger();
    if (control != kSessionControl) {
        const std::string text =
            "OperatingSystemLogonEvent was given an unexpected control code: " + std::to_string(control) +
            " Event type: " + std::to_string(eventType);
        if (logger != nullptr) logger->Debug("%s", text.c_str());
        throw std::invalid_argument(text);
    }
    m_sessionType = SessionEventType(eventType, logger);
    m_sessionId = SessionIdIn(eventData);
    if (logger != nullptr) {
        logger->Debug("Session ID for SERVICE_CONTROL_SESSIONCHANGE event %lu is %lu", eventType,
                      static_cast<unsigned long>(m_sessionId));
    }
    LogEvent();
}

void OperatingSystemUserSessionNotification::LogEvent() const {
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Debug("OperatingSystemUserSessionNotification %s occurred",
                      LogText::OneLine(EventToString()).c_str());
    }
}

}  // namespace quillon
