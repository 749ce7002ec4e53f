#include "simulation/eventlog/EventLog.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "base/Characters.h"
#include "base/CivilTime.h"

namespace quillon::simulation {

namespace {

constexpr int kActionDeliver = 1;

std::string Folded(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), base::Lower<char>);
    return name;
}

std::uint64_t FileTimeNow() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, base::kTicksPerSecond>>;
    constexpr std::int64_t kBefore1970 =
        -base::DaysFromCivil(1601, 1, 1) * base::kSecondsPerDay * base::kTicksPerSecond;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(kBefore1970 + std::chrono::duration_cast<Ticks>(now).count());
}

}  // namespace

EventLog& EventLog::Machine() {
    static EventLog& log = *new EventLog;
    return log;
}

EntryPoints EventLog::Exports() {
    return {{"EvtSubscribe", reinterpret_cast<platform::Procedure>(&Subscribe)},
            {"EvtClose", reinterpret_cast<platform::Procedure>(&Close)},
            {"EvtCreateRenderContext", reinterpret_cast<platform::Procedure>(&CreateRenderContext)},
            {"EvtRender", reinterpret_cast<platform::Procedure>(&Render)},
            {"EvtCreateBookmark", reinterpret_cast<platform::Procedure>(&CreateBookmark)},
            {"EvtUpdateBookmark", reinterpret_cast<platform::Procedure>(&UpdateBookmark)},
            {"EvtQuery", reinterpret_cast<platform::Procedure>(&Query)},
            {"EvtSeek", reinterpret_cast<platform::Procedure>(&Seek)},
            {"EvtOpenPublisherMetadata", reinterpret_cast<platform::Procedure>(&OpenPublisherMetadata)},
            {"EvtFormatMessage", reinterpret_cast<platform::Procedure>(&FormatMessageText)},
            {"EvtNext", reinterpret_cast<platform::Procedure>(&Next)},
            {"EvtOpenChannelConfig", reinterpret_cast<platform::Procedure>(&OpenChannelConfig)},
            {"EvtGetChannelConfigProperty", reinterpret_cast<platform::Procedure>(&GetChannelConfigProperty)},
            {"EvtSetChannelConfigProperty", reinterpret_cast<platform::Procedure>(&SetChannelConfigProperty)},
            {"EvtSaveChannelConfig", reinterpret_cast<platform::Procedure>(&SaveChannelConfig)}};
}

void EventLog::Reset() {
    const std::lock_guard lock(m_mutex);
    m_channels.clear();
    m_objects.clear();
    m_failures.clear();
    m_unreadable.clear();
    m_note.reset();
}

void EventLog::AddChannel(const std::string& name, bool isEnabled, std::size_t capacity) {
    const std::lock_guard lock(m_mutex);
    m_channels[Folded(name)] = {name, isEnabled, capacity, {}, 0};
}

bool EventLog::IsEnabled(const std::string& channel) {
    const std::lock_guard lock(m_mutex);
    const Channel* const found = Find(channel);
    return found != nullptr && found->isEnabled;
}

std::uint64_t EventLog::Write(const std::string& channel, Event event) {
    event.recordId = 0;
    return Forward(channel, std::move(event));
}

std::uint64_t EventLog::Forward(const std::string& channel, Event event) {
    std::vector<void*> subscriptions;
    std::uint64_t number = 0;
    {
        const std::lock_guard lock(m_mutex);
        Channel* const target = Find(channel);
        if (target == nullptr || !target->isEnabled) return 0;
        event.place = ++target->lastRecordId;
        if (event.recordId == 0) event.recordId = event.place;
        number = event.recordId;
        event.fileTime = FileTimeNow();
        event.channel = target->name;
        if (target->events.size() == target->capacity) target->events.pop_front();
        target->events.push_back(std::make_shared<const Event>(std::move(event)));
        for (auto& [handle, object] : m_objects) {
            auto* const subscription = std::get_if<Subscription>(&object);
            if (subscription == nullptr || Find(subscription->channel) != target) continue;
            if (!subscription->query.Matches(*target->events.back())) continue;
            subscription->undelivered.push_back(target->events.back());
            subscriptions.push_back(reinterpret_cast<void*>(handle));
        }
    }
    for (void* const subscription : subscriptions) Deliver(subscription);
    return number;
}

void EventLog::Clear(const std::string& channel, bool restartNumbers) {
    const std::lock_guard lock(m_mutex);
    Channel& target = m_channels.at(Folded(channel));
    target.events.clear();
    if (restartNumbers) target.lastRecordId = 0;
}

void EventLog::FailNext(const std::string& entryPoint, std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    m_failures[entryPoint] = code;
}

void EventLog::MakeUnreadable(const std::string& message, std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    m_unreadable[message] = code;
}

std::size_t EventLog::CountHandles() {
    const std::lock_guard lock(m_mutex);
    return m_objects.size();
}

EventLog::Channel* EventLog::Find(const std::string& name) {
    const auto found = m_channels.find(Folded(name));
    return found == m_channels.end() ? nullptr : &found->second;
}

void* EventLog::Keep(Object object) {
    m_objects.emplace(++m_lastHandle, std::move(object));
    return reinterpret_cast<void*>(m_lastHandle);
}

std::uint32_t EventLog::TakeFailure(const char* entryPoint) {
    const auto failure = m_failures.extract(entryPoint);
    return failure.empty() ? 0 : failure.mapped();
}

/// Delivers until nothing is left, so that events that are written meanwhile keep their order.
void EventLog::Deliver(void* subscription) {
    std::thread([this, subscription] {
        try {
            DeliverAll(subscription);
        } catch (const std::bad_alloc&) {  // what is left is delivered with the next event
        }
    }).join();
}

void EventLog::DeliverAll(void* subscription) {
    Subscription copy;
    while (const EventPointer event = TakeUndelivered(subscription, copy)) {
        void* handle = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            handle = Keep(event);
        }
        copy.callback(kActionDeliver, copy.context, handle);
        const std::lock_guard lock(m_mutex);
        m_objects.erase(reinterpret_cast<std::uintptr_t>(handle));
    }
}

/// Takes the next event for a subscription; nothing when it is closed, pulls its events itself, or has
/// none.
EventLog::EventPointer EventLog::TakeUndelivered(void* subscription, Subscription& copy) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(subscription));
    if (found == m_objects.end()) return nullptr;
    auto& kept = std::get<Subscription>(found->second);
    if (kept.callback == nullptr || kept.undelivered.empty()) return nullptr;
    copy.callback = kept.callback;
    copy.context = kept.context;
    EventPointer event = std::move(kept.undelivered.front());
    kept.undelivered.pop_front();
    return event;
}

}  // namespace quillon::simulation
