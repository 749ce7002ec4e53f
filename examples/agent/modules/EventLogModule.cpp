#include "modules/Modules.h"

#include <limits>
#include <mutex>
#include <utility>

#include "modules/Describe.h"
#include "modules/Waiting.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/EventLogReader.h"
#include "quillon/EvtHandle.h"
#include "quillon/ICLogger.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/ParameterBinder.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr long long kDefaultMax = 100;
constexpr long long kDefaultSeconds = 10;

bool HasEventLog(InvocationResult& result) {
    EventLogProxy::Initialize(*ServiceLocator::Get<ICLogger>());
    if (EventLogProxy::IsAvailable()) return true;
    return Fail(InvocationResult::kSystemFailure, "The system has no event log", result);
}

void Query(const MethodParameters& parameters, InvocationResult& result) {
    std::string channel, query = "*";
    long long max = kDefaultMax;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("channel", channel);
    binder.AddOptionalBinding("query", query);
    binder.AddOptionalBinding("max", max);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("max", max, 1, std::numeric_limits<long long>::max(), result) ||
        !HasEventLog(result)) {
        return;
    }

    DataTable table = EventLogReader::MakeTable();
    const auto outcome = EventLogReader::Query(channel, query, [&](const LogEvent& event) {
        table.AddRow(EventLogReader::ToRow(event));
        return --max > 0;
    });
    result.resultTable = std::move(table);
    if (outcome.errorCode != 0)
        Fail(InvocationResult::kSystemFailure,
             StringUtils::GetErrorAsString(static_cast<int>(outcome.errorCode)), result);
}

/// Takes what a subscription delivers. It outlives every subscription: a last event may come
/// while that is being closed.
class Deliveries {
public:
    static Deliveries& Get() {
        static Deliveries& deliveries = *new Deliveries;
        return deliveries;
    }

    static unsigned long Take(EVT_SUBSCRIBE_NOTIFY_ACTION action, void*, void* event) {
        if (action != EvtSubscribeActionDeliver) return 0;
        try {
            LogEvent read;
            if (EventLogReader::Read(event, read)) Get().Add(read);
        } catch (...) {  // no memory for one more event
        }
        return 0;
    }

    DataTable TakeAll() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_events, EventLogReader::MakeTable());
    }

private:
    void Add(const LogEvent& event) {
        const std::lock_guard lock(m_mutex);
        m_events.AddRow(EventLogReader::ToRow(event));
    }

    std::mutex m_mutex;
    DataTable m_events = EventLogReader::MakeTable();
};

void Follow(const MethodParameters& parameters, InvocationResult& result) {
    constexpr unsigned long kToFutureEvents = 1;
    std::string channel;
    long long seconds = kDefaultSeconds;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("channel", channel);
    binder.AddOptionalBinding("seconds", seconds);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("seconds", seconds, 0, kLongestWait, result) ||
        !HasEventLog(result))
        return;

    const std::wstring wide = StringUtils::NarrowStringToWide(channel);
    if (!EventLogProxy::EnableChannelIfRequired(wide.c_str())) {
        Fail(InvocationResult::kSystemFailure, "Channel '" + channel + "' cannot be enabled", result);
        return;
    }
    const DestructorFunctor release([&] { EventLogProxy::DisableChannelIfRequired(wide.c_str()); });
    Deliveries::Get().TakeAll();
    EvtHandle subscription(EventLogProxy::EvtSubscribe(nullptr, nullptr, wide.c_str(), L"*", nullptr, nullptr,
                                                       &Deliveries::Take, kToFutureEvents));
    if (!subscription) {
        Fail(InvocationResult::kSystemFailure, StringUtils::GetLastErrorAsString(), result);
        return;
    }
    WaitSeconds(seconds);
    subscription.Reset();
    result.resultTable = Deliveries::Get().TakeAll();
}

void DescribeEvents(IMethodMetadataBuilder& builder) {
    builder.Note("Outside Windows the event log is simulated: its one channel, Quillon, holds a few events.");
    AddColumn(builder, "RecordId", typeid(long long), "Number of the event in its channel.");
    AddColumn(builder, "Time", typeid(std::string), "When it was logged, UTC.");
    AddColumn(builder, "Provider", typeid(std::string), "Who logged it.");
    AddColumn(builder, "EventId", typeid(long long), "Which of the provider's events it is.");
    AddColumn(builder, "Level", typeid(long long),
              "1 critical, 2 error, 3 warning, 4 information, 5 verbose, 0 always.");
    AddColumn(builder, "Channel", typeid(std::string), "The channel's own name.");
    AddColumn(builder, "Computer", typeid(std::string), "Where it was logged.");
    AddColumn(builder, "Xml", typeid(std::string), "The whole event.");
}

void DescribeQuery(IMethodMetadataBuilder& builder) {
    builder.Description("Reads a channel of the event log, newest event first.")
        .Example("quillon-agent run EventLog.Query channel=Quillon max=10")
        .CreateParameter("channel", typeid(std::string))
        .Description("Name of the channel, such as Application.")
        .BindParameter()
        .CreateParameter("query", typeid(std::string))
        .Description("XPath that the events must match, such as *[System[(EventID=1)]].")
        .OptionalValue("*")
        .BindParameter()
        .CreateParameter("max", typeid(long long))
        .Description("Largest number of events.")
        .OptionalValue(kDefaultMax)
        .BindParameter();
    DescribeEvents(builder);
}

void DescribeFollow(IMethodMetadataBuilder& builder) {
    builder.Description("Collects what is logged to a channel for a while.")
        .Flags({IMethodMetadata::MayModifySystemState})
        .Note("A channel that is disabled is enabled for that time.")
        .Example("quillon-agent run EventLog.Follow channel=Quillon seconds=5")
        .CreateParameter("channel", typeid(std::string))
        .Description("Name of the channel, such as Application.")
        .BindParameter()
        .CreateParameter("seconds", typeid(long long))
        .Description("How long; less when the agent is asked to end.")
        .OptionalValue(kDefaultSeconds)
        .BindParameter();
    DescribeEvents(builder);
}

}  // namespace

std::unique_ptr<IModule> MakeEventLogModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("EventLog.Query", IMethodMetadata::V5_0, &DescribeQuery, &Query));
    methods.push_back(MakeMethod("EventLog.Follow", IMethodMetadata::V5_0, &DescribeFollow, &Follow));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
