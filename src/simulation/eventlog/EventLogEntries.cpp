#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>

#include "base/ErrorCodes.h"
#include "base/NumberText.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "simulation/eventlog/EventLog.h"

namespace quillon::simulation {

namespace {

constexpr std::uint32_t kNotSupported = 50;
constexpr std::uint32_t kInvalidQuery = 15001;
constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kChannelNotFound = 15007;
constexpr std::uint32_t kUnresolvedInsert = 15029;

int Result(std::uint32_t code) {
    if (code != 0) platform::SetLastErrorCode(code == EventLog::kWithoutReason ? 0 : code);
    return code == 0 ? 1 : 0;
}

void* NoHandle(std::uint32_t code) {
    platform::SetLastErrorCode(code == EventLog::kWithoutReason ? 0 : code);
    return nullptr;
}

std::string NarrowOrEmpty(const wchar_t* text) {
    return text == nullptr ? std::string() : base::ToUtf8(text);
}

/// The value of an attribute in single quotes.
std::string Attribute(const std::string& xml, const std::string& name) {
    const std::size_t at = xml.find(name + "='");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + name.size() + 2;
    return xml.substr(begin, xml.find('\'', begin) - begin);
}

/// Fills a buffer as EvtRender does; the size is told also when it does not fit.
int CopyOut(const void* bytes, std::size_t size, unsigned long bufferSize, void* buffer,
            unsigned long* used) {
    *used = static_cast<unsigned long>(size);
    if (bufferSize < size) return Result(base::kInsufficientBuffer);
    std::memcpy(buffer, bytes, size);
    return 1;
}

int CopyText(const std::string& text, unsigned long bufferSize, void* buffer, unsigned long* used) {
    const std::wstring wide = base::ToWide(text);
    return CopyOut(wide.c_str(), (wide.size() + 1) * sizeof(wchar_t), bufferSize, buffer, used);
}

/// The values, and behind them the texts that they point to.
int CopyValues(const Event& event, unsigned long bufferSize, void* buffer, unsigned long* used) {
    const std::pair<unsigned, std::wstring> texts[] = {
        {platform::EvtProviderName, base::ToWide(event.provider)},
        {platform::EvtChannel, base::ToWide(event.channel)},
        {platform::EvtComputer, L"localhost"}};
    constexpr std::array<unsigned char, 12> kLocalSystem{1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0};
    std::size_t size = platform::EvtSystemPropertyCount * sizeof(platform::EvtVariant) + kLocalSystem.size();
    for (const auto& [index, text] : texts) size += (text.size() + 1) * sizeof(wchar_t);
    *used = static_cast<unsigned long>(size);
    if (bufferSize < size) return Result(base::kInsufficientBuffer);

    auto* const values = static_cast<platform::EvtVariant*>(buffer);
    std::fill_n(values, std::size_t{platform::EvtSystemPropertyCount}, platform::EvtVariant{});
    const auto set = [values](unsigned index, std::uint64_t number, platform::EvtType type) {
        values[index].number = number;
        values[index].type = type;
    };
    set(platform::EvtEventId, event.eventId, platform::EvtType::UInt16);
    set(platform::EvtLevel, event.level, platform::EvtType::Byte);
    set(platform::EvtTimeCreated, event.fileTime, platform::EvtType::FileTime);
    set(platform::EvtRecordId, event.recordId, platform::EvtType::UInt64);
    set(platform::EvtTask, 3, platform::EvtType::UInt16);
    set(platform::EvtOpcode, 1, platform::EvtType::Byte);
    set(platform::EvtKeywords, 0x8000000000000000, platform::EvtType::HexInt64);
    set(platform::EvtProcessId, 4711, platform::EvtType::UInt32);
    set(platform::EvtThreadId, 815, platform::EvtType::UInt32);
    auto* place = reinterpret_cast<wchar_t*>(values + platform::EvtSystemPropertyCount);
    for (const auto& [index, text] : texts) {
        std::wmemcpy(place, text.c_str(), text.size() + 1);
        values[index].text = place;
        values[index].type = platform::EvtType::String;
        place += text.size() + 1;
    }
    std::memcpy(place, kLocalSystem.data(), kLocalSystem.size());
    values[platform::EvtUserId].sid = reinterpret_cast<const unsigned char*>(place);
    values[platform::EvtUserId].type = platform::EvtType::Sid;
    return 1;
}

}  // namespace

template <class Kind>
Kind* EventLog::As(void* handle) {
    const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_objects.end() ? nullptr : std::get_if<Kind>(&found->second);
}

void* EventLog::Subscribe(void*, void* signalEvent, const wchar_t* channelPath, const wchar_t* query,
                          void* bookmark, void* context, platform::EvtFunctions::SubscribeCallback callback,
                          unsigned long flags) {
    EventLog& log = Machine();
    if ((signalEvent == nullptr) == (callback == nullptr)) return NoHandle(base::kInvalidParameter);
    const auto condition = EventQuery::Parse(NarrowOrEmpty(query));
    if (!condition) return NoHandle(kInvalidQuery);
    Subscription subscription{NarrowOrEmpty(channelPath), *condition, callback, context, {}};
    void* handle = nullptr;
    std::optional<Event> note;
    {
        const std::lock_guard lock(log.m_mutex);
        std::uint32_t code = log.TakeFailure("EvtSubscribe");
        if (code == 0) code = log.Begin(subscription, bookmark, flags);
        if (code != 0) return NoHandle(code);
        handle = log.Keep(subscription);
        note = log.m_note;
    }
    log.Deliver(handle);
    if (note) log.Write(subscription.channel, *note);
    return handle;
}

std::uint32_t EventLog::Begin(Subscription& subscription, const void* bookmark, unsigned long flags) {
    const Channel* const channel = Find(subscription.channel);
    if (channel == nullptr) return kChannelNotFound;
    const unsigned long origin = flags & platform::kEvtOriginMask;
    if (origin == platform::kEvtToFutureEvents) return 0;
    std::uint64_t after = 0;
    if (origin == platform::kEvtAfterBookmark) {
        const Bookmark* const mark = As<Bookmark>(const_cast<void*>(bookmark));
        if (mark == nullptr) return base::kInvalidParameter;
        after = mark->place;
        const bool isThere = std::any_of(channel->events.begin(), channel->events.end(),
                                         [after](const auto& event) { return event->place == after; });
        if (!isThere && (flags & platform::kEvtStrict) != 0) return base::kNotFound;
    }
    for (const auto& event : channel->events) {
        if (event->place > after && subscription.query.Matches(*event))
            subscription.undelivered.push_back(event);
    }
    return 0;
}

int EventLog::Close(void* handle) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    const std::uint32_t failure = log.TakeFailure("EvtClose");
    if (failure != 0) return Result(failure);
    return Result(log.m_objects.erase(reinterpret_cast<std::uintptr_t>(handle)) == 1 ? 0
                                                                                     : base::kInvalidHandle);
}

void* EventLog::CreateRenderContext(unsigned long, const wchar_t**, unsigned long flags) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtCreateRenderContext")) return NoHandle(failure);
    return flags == platform::kEvtContextSystem ? log.Keep(RenderContext()) : NoHandle(kNotSupported);
}

int EventLog::Render(void* context, void* fragment, unsigned long flags, unsigned long bufferSize,
                     void* buffer, unsigned long* bufferUsed, unsigned long* propertyCount) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtRender")) return Result(failure);
    *propertyCount = 0;
    if (flags == platform::kEvtRenderBookmark) {
        const auto* const mark = log.As<Bookmark>(fragment);
        if (mark == nullptr) return Result(base::kInvalidHandle);
        return CopyText("<BookmarkList><Bookmark Channel='" + mark->channel + "' RecordId='" +
                            std::to_string(mark->place) + "' IsCurrent='true'/></BookmarkList>",
                        bufferSize, buffer, bufferUsed);
    }
    const auto* const event = log.As<EventPointer>(fragment);
    if (event == nullptr) return Result(base::kInvalidHandle);
    if (const auto found = log.m_unreadable.find((*event)->message); found != log.m_unreadable.end())
        return Result(found->second);
    if (flags == platform::kEvtRenderXml) return CopyText(EventXml(**event), bufferSize, buffer, bufferUsed);
    if (log.As<RenderContext>(context) == nullptr) return Result(base::kInvalidHandle);
    *propertyCount = platform::EvtSystemPropertyCount;
    return CopyValues(**event, bufferSize, buffer, bufferUsed);
}

void* EventLog::CreateBookmark(const wchar_t* bookmarkXml) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtCreateBookmark")) return NoHandle(failure);
    const std::string xml = NarrowOrEmpty(bookmarkXml);
    std::string number = Attribute(xml, "RecordId");
    std::string_view digits = number;
    const auto recordId = base::TakeUnsigned(digits);
    if (!xml.empty() && !recordId) return NoHandle(base::kInvalidParameter);
    return log.Keep(Bookmark{Attribute(xml, "Channel"), recordId.value_or(0)});
}

int EventLog::UpdateBookmark(void* bookmark, void* event) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtUpdateBookmark")) return Result(failure);
    auto* const mark = log.As<Bookmark>(bookmark);
    const auto* const kept = log.As<EventPointer>(event);
    if (mark == nullptr || kept == nullptr) return Result(base::kInvalidHandle);
    *mark = {(*kept)->channel, (*kept)->place};
    return 1;
}

void* EventLog::Query(void*, const wchar_t* path, const wchar_t* query, unsigned long flags) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtQuery")) return NoHandle(failure);
    if ((flags & (platform::kEvtChannelPath | platform::kEvtFilePath)) == 0) return NoHandle(kNotSupported);
    const auto condition = EventQuery::Parse(NarrowOrEmpty(query));
    if (!condition) return NoHandle(kInvalidQuery);
    const std::string name = NarrowOrEmpty(path);
    const bool isFile = (flags & platform::kEvtFilePath) != 0;
    const Channel* const channel = isFile == name.ends_with(".evtx") ? log.Find(name) : nullptr;
    if (channel == nullptr) return NoHandle(isFile ? kFileNotFound : kChannelNotFound);
    ResultSet results;
    for (const EventPointer& event : channel->events) {
        if (condition->Matches(*event)) results.events.push_back(event);
    }
    if ((flags & platform::kEvtReverse) != 0) std::reverse(results.events.begin(), results.events.end());
    return log.Keep(std::move(results));
}

int EventLog::Next(void* resultSet, unsigned long count, void** events, unsigned long, unsigned long,
                   unsigned long* returned) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    *returned = 0;
    if (const std::uint32_t failure = log.TakeFailure("EvtNext")) return Result(failure);
    auto* const results = log.As<ResultSet>(resultSet);
    auto* const pulled = log.As<Subscription>(resultSet);
    if (results == nullptr && pulled == nullptr) return Result(base::kInvalidHandle);
    while (*returned < count) {
        EventPointer event;
        if (results != nullptr && results->next < results->events.size()) {
            event = results->events[results->next++];
        } else if (pulled != nullptr && !pulled->undelivered.empty()) {
            event = pulled->undelivered.front();
            pulled->undelivered.pop_front();
        }
        if (event == nullptr) break;
        events[(*returned)++] = log.Keep(event);
    }
    return Result(*returned > 0 ? 0 : base::kNoMoreItems);
}

/// Relative to a bookmark only, and without going on from it.
int EventLog::Seek(void* resultSet, std::int64_t position, void* bookmark, unsigned long,
                   unsigned long flags) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtSeek")) return Result(failure);
    auto* const results = log.As<ResultSet>(resultSet);
    const auto* const mark = log.As<Bookmark>(bookmark);
    if (results == nullptr || mark == nullptr) return Result(base::kInvalidHandle);
    if (position != 0 || flags != (platform::kEvtSeekRelativeToBookmark | platform::kEvtSeekStrict))
        return Result(kNotSupported);
    const auto found = std::find_if(results->events.begin(), results->events.end(),
                                    [mark](const auto& event) { return event->place == mark->place; });
    if (found == results->events.end()) return Result(base::kNotFound);
    results->next = static_cast<std::size_t>(found - results->events.begin());
    return 1;
}

void* EventLog::OpenPublisherMetadata(void*, const wchar_t*, const wchar_t*, unsigned long, unsigned long) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtOpenPublisherMetadata")) return NoHandle(failure);
    return log.Keep(Publisher());
}

int EventLog::FormatMessageText(void* publisher, void* event, unsigned long, unsigned long,
                                platform::EvtVariant*, unsigned long, unsigned long bufferSize,
                                wchar_t* buffer, unsigned long* bufferUsed) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtFormatMessage")) return Result(failure);
    const auto* const kept = log.As<EventPointer>(event);
    if (kept == nullptr || log.As<Publisher>(publisher) == nullptr) return Result(base::kInvalidHandle);
    const std::wstring text = base::ToWide((*kept)->message);
    *bufferUsed = static_cast<unsigned long>(text.size() + 1);
    if (bufferSize < *bufferUsed) return Result(base::kInsufficientBuffer);
    std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return text.find(L"%1") == std::wstring::npos ? 1 : Result(kUnresolvedInsert);
}

void* EventLog::OpenChannelConfig(void*, const wchar_t* channelPath, unsigned long) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtOpenChannelConfig")) return NoHandle(failure);
    const Channel* const channel = log.Find(NarrowOrEmpty(channelPath));
    if (channel == nullptr) return NoHandle(kChannelNotFound);
    return log.Keep(Config{channel->name, channel->isEnabled});
}

int EventLog::GetChannelConfigProperty(void* config, int property, unsigned long, unsigned long bufferSize,
                                       platform::EvtVariant* value, unsigned long* used) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtGetChannelConfigProperty")) return Result(failure);
    const auto* const kept = log.As<Config>(config);
    if (kept == nullptr) return Result(base::kInvalidHandle);
    if (property != platform::kEvtChannelConfigEnabled) return Result(kNotSupported);
    platform::EvtVariant enabled;
    enabled.boolean = kept->isEnabled ? 1 : 0;
    enabled.type = platform::EvtType::Boolean;
    return CopyOut(&enabled, sizeof enabled, bufferSize, value, used);
}

int EventLog::SetChannelConfigProperty(void* config, int property, unsigned long,
                                       const platform::EvtVariant* value) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtSetChannelConfigProperty")) return Result(failure);
    auto* const kept = log.As<Config>(config);
    if (kept == nullptr) return Result(base::kInvalidHandle);
    if (property != platform::kEvtChannelConfigEnabled || value->type != platform::EvtType::Boolean)
        return Result(base::kInvalidParameter);
    kept->isEnabled = value->boolean != 0;
    return 1;
}

int EventLog::SaveChannelConfig(void* config, unsigned long) {
    EventLog& log = Machine();
    const std::lock_guard lock(log.m_mutex);
    if (const std::uint32_t failure = log.TakeFailure("EvtSaveChannelConfig")) return Result(failure);
    const auto* const kept = log.As<Config>(config);
    if (kept == nullptr) return Result(base::kInvalidHandle);
    Channel* const channel = log.Find(kept->channel);
    if (channel == nullptr) return Result(kChannelNotFound);
    channel->isEnabled = kept->isEnabled;
    return 1;
}

}  // namespace quillon::simulation
