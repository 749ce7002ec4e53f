#include "quillon/ServiceLocator.h"

#include <gmock/gmock.h>

#include "quillon/CLogger.h"
#include "quillon/IShutdownMonitor.h"
#include "support/RecordingLogger.h"

namespace quillon::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

struct Widget {
    static const char* __InterfaceId() { return "VntItf_Widget"; }
    int number = 0;
};
struct Gadget {
    static const char* __InterfaceId() { return "VntItf_Gadget"; }
};

/// Records what reaches the process-wide logger; leaves both registries empty.
class ServiceLocatorTest : public testing::Test {
protected:
    void SetUp() override {
        CLogger::SetLoggingCallback([this](ICLogger::Level level, const std::string& text) {
            m_processLines.push_back(std::to_string(level) + ' ' + text);
        });
    }
    void TearDown() override {
        ServiceLocator::Clear();
        CLogger::ReleaseInstance();
    }

    std::vector<std::string> m_processLines;
};

}  // namespace

TEST_F(ServiceLocatorTest, WarnsOnTheRegisteredLoggerOrTheProcessWideOne) {
    RecordingLogger log;
    Widget first, second;
    ServiceLocator::Put(&first);
    ServiceLocator::Put(&second);
    EXPECT_EQ(ServiceLocator::Get<Widget>(), &second);
    EXPECT_THAT(log.Lines(), ElementsAre("Registered service VntItf_Widget",
                                         "Service 'VntItf_Widget' has already been added",
                                         "Registered service VntItf_Widget"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Warn), testing::SizeIs(1));

    EXPECT_EQ(ServiceLocator::Get<Gadget>(true), nullptr);
    EXPECT_THAT(m_processLines, IsEmpty());
    EXPECT_EQ(ServiceLocator::Get<Gadget>(), nullptr);
    EXPECT_EQ(ServiceLocator::Remove<Gadget>(), nullptr);
    EXPECT_THAT(m_processLines,
                ElementsAre("3 ServiceLocator failed to locate service with ID 'VntItf_Gadget'",
                            "3 Service 'VntItf_Gadget' cannot be removed because it hasn't been added"));
    EXPECT_EQ(ServiceLocator::Remove<Widget>(), &second);
    EXPECT_FALSE(ServiceLocator::Contains<Widget>());
}

TEST_F(ServiceLocatorTest, WithoutALoggerWarnsOnStandardError) {
    CLogger::ReleaseInstance();
    testing::internal::CaptureStderr();
    Widget widget;
    ServiceLocator::Put(&widget);
    ServiceLocator::Put(&widget);
    ServiceLocator::Get<Gadget>();
    ServiceLocator::Get<Gadget>(true);
    ServiceLocator::Remove<Gadget>();
    ServiceLocator::Put<ICLogger>(CLogger::GetInstance());
    ServiceLocator::Put<ICLogger>(CLogger::GetInstance());
    ServiceLocator::Remove<ICLogger>();
    ServiceLocator::Get<ICLogger>();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Warning: ServiceLocator failed to locate service with ID 'VntItf_ICLogger'\n"
              "Warning: ServiceLocator failed to locate service with ID 'VntItf_ICLogger'\n"
              "Warning: Service 'VntItf_Widget' has already been added\n"
              "Warning: ServiceLocator failed to locate service with ID 'VntItf_Gadget'\n"
              "Warning: Service 'VntItf_Gadget' cannot be removed because it hasn't been added\n"
              "Warning: Service 'VntItf_ICLogger' has already been added\n"
              "Warning: ServiceLocator failed to locate service with ID 'VntItf_ICLogger'\n");
}

TEST_F(ServiceLocatorTest, ListsIdentifiersInByteOrderAndKeepsNulls) {
    RecordingLogger log;
    Widget widget;
    ServiceLocator::Put(&widget);
    ServiceLocator::Put<Gadget>(nullptr);
    ServiceLocator::AddFactory<IShutdownMonitor>([] { return nullptr; }, {});
    EXPECT_EQ(ServiceLocator::ListCurrent(), "(3) VntItf_Gadget VntItf_ICLogger VntItf_Widget ");
    EXPECT_TRUE(ServiceLocator::Contains<Gadget>());
    EXPECT_EQ(ServiceLocator::Get<Gadget>(), nullptr);
    EXPECT_THAT(m_processLines, IsEmpty());

    ServiceLocator::Clear();
    EXPECT_EQ(ServiceLocator::ListCurrent(), "(0) ");
    EXPECT_FALSE(ServiceLocator::HasFactory<IShutdownMonitor>());
}

TEST_F(ServiceLocatorTest, InstancesGoToTheRecyclerRegisteredWhenTheyAreReleased) {
    int first = 0, second = 0;
    const auto make = [] { return new Widget{7}; };
    ServiceLocator::AddFactory<Widget>(make, [&](Widget* w) { first += w->number, delete w; });
    auto early = ServiceLocator::GetInstance<Widget>();
    auto late = ServiceLocator::GetInstance<Widget>();
    early.reset();
    const auto removed = ServiceLocator::RemoveFactory<Widget>();
    EXPECT_TRUE(removed.first && removed.second);
    ServiceLocator::AddFactory<Widget>(make, [&](Widget* w) { second += w->number, delete w; });
    late.reset();
    EXPECT_EQ(first, 7);
    EXPECT_EQ(second, 7);

    static Gadget lost;
    ServiceLocator::AddFactory<Gadget>([] { return &lost; }, {});
    EXPECT_THAT(m_processLines, IsEmpty());
    ServiceLocator::GetInstance<Gadget>().reset();
    EXPECT_THAT(m_processLines,
                ElementsAre("5 The ServiceLocator recycler for VntItf_Gadget failed: its object is lost"));
    ServiceLocator::RemoveFactory<Gadget>();
    ServiceLocator::AddFactory<Gadget>([]() -> Gadget* { return nullptr; }, [](Gadget*) { FAIL(); });
    EXPECT_EQ(ServiceLocator::GetInstance<Gadget>(), nullptr);
}

TEST_F(ServiceLocatorTest, FactoryMisuseIsLoggedAndThrownWithTheIdentifier) {
    static Widget first;
    ServiceLocator::AddFactory<Widget>([] { return &first; }, [](Widget*) {});
    EXPECT_THAT([] { ServiceLocator::AddFactory<Widget>([] { return nullptr; }, {}); },
                ThrowsMessage<std::invalid_argument>("VntItf_Widget"));
    EXPECT_EQ(ServiceLocator::GetInstance<Widget>().get(), &first);
    const auto throwsGadget = ThrowsMessage<std::invalid_argument>("VntItf_Gadget");
    EXPECT_THAT([] { ServiceLocator::GetInstance<Gadget>(); }, throwsGadget);
    EXPECT_THAT([] { ServiceLocator::RemoveFactory<Gadget>(); }, throwsGadget);
    EXPECT_THAT(
        m_processLines,
        ElementsAre("5 You have already registered a ServiceLocator factory+recycler for VntItf_Widget",
                    "5 You need to register a ServiceLocator factory+recycler for VntItf_Gadget",
                    "5 There is no registered ServiceLocator factory+recycler for VntItf_Gadget to remove"));

    ServiceLocator::AddFactory<Gadget>(std::function<Gadget*()>(), {});
    EXPECT_THROW(ServiceLocator::GetInstance<Gadget>(), std::bad_function_call);
}

}  // namespace quillon::test
