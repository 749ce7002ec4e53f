#include "quillon/EventLogReader.h"

#include <optional>
#include <utility>

#include "base/ErrorCodes.h"
#include "os/EventPlace.h"
#include "os/EventReading.h"
#include "platform/ErrorText.h"
#include "platform/EventLogTypes.h"
#include "quillon/IApplicationDataStore.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using Result = EventLogReader::Result;
using Start = EventLogReader::Start;
using Visitor = EventLogReader::Visitor;

/// Visits events, counts them, and keeps the place of the last one that was taken.
class Progress {
public:
    Progress(const Visitor& visitor, EventPlace& place, Result& result)
        : m_visitor(visitor), m_place(place), m_result(result) {}

    /// Visits what a reading has left.
    void Run(EventReading& reading) {
        m_result.errorCode =
            reading.Visit([this](void* event, const LogEvent* read) { return Visit(event, read); });
        if (m_result.errorCode == 0) m_result.errorCode = m_placeCode;
    }

private:
    bool Visit(void* event, const LogEvent* read) {
        const bool goOn = read == nullptr || m_visitor(*read);
        ++(read == nullptr ? m_result.unreadable : m_result.visited);
        if (m_place.MoveTo(event, read)) return goOn;
        m_placeCode = platform::LastError();
        return false;
    }

    const Visitor& m_visitor;
    EventPlace& m_place;
    Result& m_result;
    std::uint32_t m_placeCode = 0;
};

Result ReadFromOldest(const EventLogSource& source, Start start, const Visitor& visitor, EventPlace& place) {
    Result result{0, start};
    EventReading reading(source, platform::kEvtForward);
    Progress(visitor, place, result).Run(reading);
    return result;
}

/// Moves to the newest event, and to no event when there is none.
Result SkipAll(const EventLogSource& source, EventPlace& place) {
    Result result{0, Start::Now};
    EventReading reading(source, platform::kEvtReverse);
    result.errorCode = reading.Visit([&](void* event, const LogEvent* read) {
        if (!place.MoveTo(event, read)) result.unreadable = 1;
        return false;
    });
    return result;
}

/// Skips the event of the bookmark and visits those after it. Returns nothing when that event is not there
/// any more, or another one is in its place.
std::optional<Result> ReadFromBookmark(const EventLogSource& source, const EventBookmark& from,
                                       const Visitor& visitor, EventPlace& place) {
    Result result{0, Start::Bookmark};
    EventReading reading(source, platform::kEvtForward);
    if (!place.MoveTo(from)) {
        result.errorCode = platform::LastError();
        return IsPassingFailure(result.errorCode) ? std::optional(result) : std::nullopt;
    }
    if (!reading.Seek(place.Handle())) {
        result.errorCode = reading.ErrorCode();
        return result.errorCode != 0 ? std::optional(result) : std::nullopt;
    }
    bool isSame = false;
    result.errorCode = reading.Visit([&](void*, const LogEvent* read) {
        isSame = read == nullptr || from.MayBeOf(*read);
        return false;
    });
    if (result.errorCode != 0) return result;
    if (!isSame) return std::nullopt;
    Progress(visitor, place, result).Run(reading);
    return result;
}

}  // namespace

EventLogReader::EventLogReader(std::string channel, IApplicationDataStore& store) : m_store(store) {
    m_source.name = std::move(channel);
}

EventLogReader::EventLogReader(EventLogSource source, IApplicationDataStore& store)
    : m_source(std::move(source)), m_store(store) {}

Result EventLogReader::ReadNew(const Visitor& visitor) const {
    std::string before;
    m_store.GetDatabaseProperty(PropertyName(), before);
    std::string bookmark = before;
    EventPlace place;
    const auto keep = [&] {
        if (const auto reached = place.Get()) bookmark = reached->ToText();
        if (bookmark != before) m_store.SetDatabaseProperty(PropertyName(), bookmark);
    };
    try {
        const Result result = Continue(bookmark, place, visitor);
        keep();
        return result;
    } catch (...) {
        keep();
        throw;
    }
}

/// Changes the bookmark only where there is no event to be its place.
Result EventLogReader::Continue(std::string& bookmark, EventPlace& place, const Visitor& visitor) const {
    const auto from = EventBookmark::Parse(bookmark, m_source.name);
    if (!from && m_source.fromNow) {
        const Result result = SkipAll(m_source, place);
        if (result.errorCode == 0) bookmark = EventBookmark().ToText();
        return result;
    }
    if (!from) return ReadFromOldest(m_source, Start::Oldest, visitor, place);
    if (from->xml.empty()) return ReadFromOldest(m_source, Start::Bookmark, visitor, place);
    if (const auto result = ReadFromBookmark(m_source, *from, visitor, place)) return *result;
    place = EventPlace();
    const Result result = ReadFromOldest(m_source, Start::Gap, visitor, place);
    if (result.errorCode == 0) bookmark.clear();  // a cleared channel's gap is told once, also while empty
    return result;
}

std::string EventLogReader::PropertyName() const {
    const std::string query = m_source.query == "*" ? "" : ' ' + m_source.query;
    return "EventLogBookmark." + StringUtils::ToUppercase(m_source.name) + query;
}

Result EventLogReader::Query(const std::string& channel, const std::string& query, const Visitor& visitor) {
    EventLogSource source;
    source.name = channel;
    source.query = query;
    return Query(source, visitor);
}

Result EventLogReader::Query(const EventLogSource& source, const Visitor& visitor) {
    Result result;
    EventReading reading(source, platform::kEvtReverse);
    result.errorCode = reading.Visit([&](void*, const LogEvent* read) {
        ++(read == nullptr ? result.unreadable : result.visited);
        return read == nullptr || visitor(*read);
    });
    return result;
}

}  // namespace quillon
