#include "modules/Modules.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "modules/Describe.h"
#include "modules/Waiting.h"
#include "quillon/DescribedBinder.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/EventLogProxy.h"
#include "quillon/EventLogReader.h"
#include "quillon/EventSubscription.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr long long kDefaultMax = 100;
constexpr long long kDefaultSeconds = 10;
constexpr long long kMostFollowed = 10'000;

bool HasEventLog(InvocationResult& result) {
    EventLogProxy::Initialize(*ServiceLocator::Get<ICLogger>());
    if (EventLogProxy::IsAvailable()) return true;
    return Fail(InvocationResult::kSystemFailure, "The system has no event log", result);
}

/// Tells of events that are there and cannot be shown.
void LogUnreadable(const std::string& channel, std::uint64_t count) {
    if (count != 0)
        ServiceLocator::Get<ICLogger>()->Warn("%llu events of channel '%s' cannot be rendered",
                                              static_cast<unsigned long long>(count),
                                              LogText::OneLine(channel).c_str());
}

void FailToRead(const std::string& channel, std::uint32_t code, InvocationResult& result) {
    const std::string reason = StringUtils::GetErrorAsString(static_cast<int>(code));
    Fail(InvocationResult::kSystemFailure, "Channel '" + channel + "' cannot be read: " + reason, result);
}

void Query(DescribedBinder& binder, InvocationResult& result) {
    EventLogSource source;
    long long max = 0;
    binder.Add("channel", source.name);
    binder.Add("query", source.query);
    binder.Add("max", max);
    binder.Add("file", source.isFile);
    binder.Add("message", source.withMessage);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("max", max, 1, std::numeric_limits<long long>::max(), result) ||
        !HasEventLog(result)) {
        return;
    }

    DataTable table = EventLogReader::MakeTable();
    const auto outcome = EventLogReader::Query(source, [&](const LogEvent& event) {
        table.AddRow(EventLogReader::ToRow(event));
        return --max > 0;
    });
    result.resultTable = std::move(table);
    LogUnreadable(source.name, outcome.unreadable);
    if (outcome.errorCode != 0) FailToRead(source.name, outcome.errorCode, result);
}

/// Takes events until the time is over, there are enough, or the host shuts down.
void TakeEvents(const EventLogSource& source, std::chrono::seconds time, long long max,
                InvocationResult& result) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + time;
    EventSubscription subscription;
    if (!subscription.Open(source)) return FailToRead(source.name, subscription.ErrorCode(), result);
    DataTable table = EventLogReader::MakeTable();
    LogEvent event;
    auto outcome = EventSubscription::Outcome::Event;
    while (outcome == EventSubscription::Outcome::Event && max-- > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        outcome = subscription.Take(event, std::max(left, std::chrono::milliseconds(0)));
        if (outcome == EventSubscription::Outcome::Event) table.AddRow(EventLogReader::ToRow(event));
    }
    result.resultTable = std::move(table);
    LogUnreadable(source.name, subscription.Unreadable());
    if (outcome == EventSubscription::Outcome::Failed)
        FailToRead(source.name, subscription.ErrorCode(), result);
}

void Follow(DescribedBinder& binder, InvocationResult& result) {
    EventLogSource source;
    source.fromNow = true;
    long long seconds = 0, max = 0;
    binder.Add("channel", source.name);
    binder.Add("seconds", seconds);
    binder.Add("query", source.query);
    binder.Add("max", max);
    binder.Add("message", source.withMessage);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("seconds", seconds, 0, kLongestWait, result) ||
        !MethodParameterValidation::InRange("max", max, 1, std::numeric_limits<long long>::max(), result) ||
        !HasEventLog(result))
        return;

    const std::wstring wide = StringUtils::NarrowStringToWide(source.name);
    if (!EventLogProxy::EnableChannelIfRequired(wide.c_str())) {
        Fail(InvocationResult::kSystemFailure, "Channel '" + source.name + "' cannot be enabled", result);
        return;
    }
    const DestructorFunctor release([&] { EventLogProxy::DisableChannelIfRequired(wide.c_str()); });
    TakeEvents(source, std::chrono::seconds(seconds), max, result);
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
    AddColumn(builder, "Task", typeid(long long), "The provider's part of the work.");
    AddColumn(builder, "Opcode", typeid(long long), "The step in that part: 1 start, 2 stop.");
    AddColumn(builder, "Keywords", typeid(std::string), "The event's keywords, bits in hexadecimal.");
    AddColumn(builder, "ProcessId", typeid(long long), "The process that logged it; 0 when unknown.");
    AddColumn(builder, "ThreadId", typeid(long long), "The thread that logged it; 0 when unknown.");
    AddColumn(builder, "User", typeid(std::string),
              "Security identifier of the account; empty when unknown.");
    AddColumn(builder, "Message", typeid(std::string), "Text for people; empty unless it is wanted.");
    AddColumn(builder, "Xml", typeid(std::string), "The whole event.");
}

void DescribeMessage(IMethodMetadataBuilder& builder) {
    AddFlag(builder, "message", "Whether the texts of the events are read as well, which takes longer.");
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
    AddFlag(builder, "file", "Whether 'channel' is the path of an .evtx file.");
    DescribeMessage(builder);
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
        .BindParameter()
        .CreateParameter("query", typeid(std::string))
        .Description("XPath that the events must match.")
        .OptionalValue("*")
        .BindParameter()
        .CreateParameter("max", typeid(long long))
        .Description("Largest number of events, after which it ends early.")
        .OptionalValue(kMostFollowed)
        .BindParameter();
    DescribeMessage(builder);
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
