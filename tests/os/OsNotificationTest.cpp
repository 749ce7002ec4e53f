#include <gmock/gmock.h>

#include <ctime>
#include <map>
#include <stdexcept>

#include "quillon/IWindowsTerminalServicesService.h"
#include "quillon/OperatingSystemPowerNotification.h"
#include "quillon/OperatingSystemUserSessionNotification.h"
#include "support/RecordingLogger.h"

namespace quillon {

namespace {

using Level = ICLogger::Level;
using PowerNote = OperatingSystemPowerNotification;
using SessionNote = OperatingSystemUserSessionNotification;
using testing::ElementsAre;

constexpr unsigned long kPower = 13, kSession = 14;
std::uint32_t g_session[] = {8, 4'000'000'000};  // the record's size and the session

struct TerminalServices final : IWindowsTerminalServicesService {
    std::wstring GetDomainUserForSession(unsigned long id) override {
        return id != 0 ? L"user " + std::to_wstring(id) : throw std::runtime_error("100 %s");
    }
};

/// What both the exception and the log say.
template <class Note>
std::string Refusal(unsigned long control, unsigned long event) {
    const test::RecordingLogger log;
    try {
        const Note note(control, event, g_session, nullptr);
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(log.Lines(Level::Debug), ElementsAre(error.what()));
        return error.what();
    }
    return "none";
}

}  // namespace

TEST(PowerNotification, SaysWhatTheEventMeans) {
    const std::string received = "ServiceControl received: ",
                      skipping = "OperatingSystemPowerNotification skipping control code: 13 Event type: ";
    const std::tuple<unsigned long, int, std::string> cases[] = {
        {4, 4, received + "System about enter a suspended state"},
        {7, 7, received + "System resumed operation after being suspended"},
        {10, 10, received + "Power source change event is skipped"},
        {18, 12, received + "System is resuming from hibernation"},
        {32787, 7, received + "Power change event is skipped"},
        {0, 14, skipping + "0"},
        {0xFFFFFFFF, 14, skipping + "-1"},
    };
    for (const auto& [event, type, message] : cases) {
        SCOPED_TRACE(message);
        const test::RecordingLogger log;
        const auto clone = PowerNote(kPower, event, nullptr, nullptr).Clone();
        EXPECT_EQ(dynamic_cast<PowerNote&>(*clone).GetPowerNotificationType(), type);
        EXPECT_THAT(log.Lines(Level::Debug), ElementsAre(message));
    }
}

TEST(SessionNotification, SaysWhatTheEventMeansAndClonesQuietly) {
    const std::map<unsigned long, std::string> names = {
        {0, "unknown"},          {1, "LocalConnect"},  {2, "LocalDisconnect"}, {3, "RemoteConnect"},
        {4, "RemoteDisconnect"}, {5, "UserLogOn"},     {6, "UserLogOff"},      {7, "Locked"},
        {8, "Unlock"},           {9, "RemoteControl"}, {10, "unknown"},        {0xFFFFFFFF, "unknown"}};
    for (const auto& [event, name] : names) {
        SCOPED_TRACE(name);
        const test::RecordingLogger log;
        const bool isKnown = name != "unknown";
        const auto before = std::time(nullptr);
        const auto clone = SessionNote(kSession, event, g_session, nullptr).Clone();
        const auto& note = dynamic_cast<SessionNote&>(*clone);
        EXPECT_EQ(note.GetUserSessionNotificationType(), isKnown ? static_cast<int>(event) - 1 : 9);
        EXPECT_EQ(note.EventToString(), name);
        EXPECT_TRUE(note.GetTimestamp() >= before && note.GetTimestamp() <= std::time(nullptr));
        EXPECT_THAT(log.Lines(Level::Debug),
                    ElementsAre("Session ID for SERVICE_CONTROL_SESSIONCHANGE event " +
                                    std::to_string(event) + " is 4000000000",
                                "OperatingSystemUserSessionNotification " + name + " occurred"));
        EXPECT_EQ(log.Lines(Level::Warn).size(), isKnown ? 0U : 1U);
    }
}

TEST(SessionNotification, OnlyALogonHasAUser) {
    test::RecordingLogger log;
    const SessionNote off(kSession, 6, g_session, nullptr), on(kSession, 5, g_session, nullptr),
        none(kSession, 5, nullptr, nullptr);
    log.Forget();
    EXPECT_EQ(off.GetSessionDomainUser(false), L"<unknown-user>");
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_EQ(off.GetSessionDomainUser(true), L"<unknown-user>");
    EXPECT_EQ(on.GetSessionDomainUser(true), L"<unknown-user>");
    EXPECT_EQ(log.Lines(Level::Warn).front(), "Cannot get domain user for a logged out user");
    EXPECT_EQ(log.Lines(Level::Warn).back(), "Unable to locate the windowsTerminalServicesService object");
    TerminalServices services;
    ServiceLocator::Put<IWindowsTerminalServicesService>(&services);
    EXPECT_EQ(on.GetSessionDomainUser(true), L"user 4000000000");
    log.Forget();
    EXPECT_EQ(none.GetSessionDomainUser(false) + none.GetSessionDomainUser(true), L"");
    EXPECT_THAT(log.Lines(Level::Debug), ElementsAre("exception [100 %s]"));
    ServiceLocator::Remove<IWindowsTerminalServicesService>();
}

TEST(Notifications, CompareByTypeAndRefuseOtherControls) {
    const PowerNote power(kPower, 4, nullptr, nullptr), other(kPower, 7, nullptr, nullptr);
    EXPECT_TRUE(power == other);
    EXPECT_FALSE(power == SessionNote(kSession, 4, nullptr, nullptr));
    EXPECT_EQ(power.ToString(), "Operating System power notification");
    EXPECT_EQ(
        Refusal<PowerNote>(kSession, 0xFFFFFFFF),
        "OperatingSystemPowerNotification was given an unexpected control code: 14 Event type: 4294967295");
    EXPECT_EQ(Refusal<SessionNote>(kPower, 5),
              "OperatingSystemLogonEvent was given an unexpected control code: 13 Event type: 5");
}

}  // namespace quillon
