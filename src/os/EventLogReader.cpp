#include "quillon/EventLogReader.h"

#include <array>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "os/EventBookmark.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"
#include "quillon/EvtHandle.h"
#include "quillon/IApplicationDataStore.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using Result = EventLogReader::Result;
using Start = EventLogReader::Start;
using Visitor = EventLogReader::Visitor;

constexpr unsigned long kNoTimeout = 0xFFFFFFFF;

/// Owns the handles of one EvtNext from the moment when they are there.
struct Batch {
    /// Some systems refuse a batch of more than 2 MiB with RPC_S_INVALID_BOUND (1734), and an event may
    /// have 64 KiB.
    static constexpr unsigned long kSize = 16;
    std::array<EvtHandle, kSize> events;
    unsigned long count = 0;

    bool Take(void* resultSet) {
        std::array<void*, kSize> handles{};
        count = 0;
        if (EventLogProxy::EvtNext(resultSet, kSize, handles.data(), kNoTimeout, 0, &count) == 0)
            return false;
        for (unsigned long i = 0; i < count; ++i) events[i].Reset(handles[i]);
        return true;
    }
};

/// Visits the events of a query. Returns 0 when the query or the visitor came to an end, else the code of
/// the failure.
std::uint32_t VisitAll(const std::string& channel, const std::string& query, unsigned long direction,
                       const Visitor& visitor) {
    const EvtHandle results(EventLogProxy::EvtQuery(nullptr, base::ToWide(channel).c_str(),
                                                    base::ToWide(query).c_str(),
                                                    platform::kEvtChannelPath | direction));
    if (!results) return platform::LastError();
    Batch batch;
    while (batch.Take(results.Get())) {
        for (unsigned long i = 0; i < batch.count; ++i) {
            LogEvent event;
            if (!EventLogReader::Read(batch.events[i].Get(), event)) {
                const std::uint32_t code = platform::LastError();
                return code != 0 ? code : base::kInvalidData;
            }
            if (!visitor(event)) return 0;
        }
    }
    const std::uint32_t code = platform::LastError();
    return code == base::kNoMoreItems ? 0 : code;
}

/// Counts what it visits, and keeps the place of the last event that the visitor took.
class Progress {
public:
    Progress(const Visitor& visitor, std::string& bookmark) : m_visitor(visitor), m_bookmark(bookmark) {}

    bool Visit(const LogEvent& event) {
        const bool goOn = m_visitor(event);
        m_bookmark = EventBookmark{event.recordId, event.time}.ToText();
        ++m_visited;
        return goOn;
    }
    std::uint64_t Visited() const { return m_visited; }

private:
    const Visitor& m_visitor;
    std::string& m_bookmark;
    std::uint64_t m_visited = 0;
};

Result ReadFromOldest(const std::string& channel, Start start, const Visitor& visitor,
                      std::string& bookmark) {
    Progress progress(visitor, bookmark);
    const std::uint32_t code = VisitAll(channel, "*", platform::kEvtForward,
                                        [&](const LogEvent& event) { return progress.Visit(event); });
    return {code, start, progress.Visited()};
}

/// Skips the event of the bookmark and visits those after it. Returns nothing when the first event of
/// that number or above is another one: the one of the bookmark is gone, or another event has its number.
std::optional<Result> ReadFromBookmark(const std::string& channel, const EventBookmark& from,
                                       const Visitor& visitor, std::string& bookmark) {
    Progress progress(visitor, bookmark);
    bool isFound = false;
    const auto visit = [&](const LogEvent& event) {
        if (isFound) return progress.Visit(event);
        isFound = from.IsOf(event);
        return isFound;
    };
    const std::string query = "*[System[(EventRecordID>=" + std::to_string(from.recordId) + ")]]";
    const std::uint32_t code = VisitAll(channel, query, platform::kEvtForward, visit);
    if (!isFound && code == 0) return std::nullopt;
    return Result{code, Start::Bookmark, progress.Visited()};
}

}  // namespace

EventLogReader::EventLogReader(std::string channel, IApplicationDataStore& store)
    : m_channel(std::move(channel)), m_store(store) {}

Result EventLogReader::ReadNew(const Visitor& visitor) const {
    std::string before;
    m_store.GetDatabaseProperty(PropertyName(), before);
    std::string bookmark = before;
    const auto keep = [&] {
        if (bookmark != before) m_store.SetDatabaseProperty(PropertyName(), bookmark);
    };
    try {
        const Result result = Continue(bookmark, visitor);
        keep();
        return result;
    } catch (...) {
        keep();
        throw;
    }
}

Result EventLogReader::Continue(std::string& bookmark, const Visitor& visitor) const {
    const auto from = EventBookmark::Parse(bookmark);
    if (!from) return ReadFromOldest(m_channel, Start::Oldest, visitor, bookmark);
    if (const auto result = ReadFromBookmark(m_channel, *from, visitor, bookmark)) return *result;
    bookmark.clear();  // a cleared channel's gap is told once, also while it is empty
    return ReadFromOldest(m_channel, Start::Gap, visitor, bookmark);
}

std::string EventLogReader::PropertyName() const {
    return "EventLogBookmark." + StringUtils::ToUppercase(m_channel);
}

Result EventLogReader::Query(const std::string& channel, const std::string& query, const Visitor& visitor) {
    Result result;
    result.errorCode = VisitAll(channel, query, platform::kEvtReverse, [&](const LogEvent& event) {
        ++result.visited;
        return visitor(event);
    });
    return result;
}

}  // namespace quillon
