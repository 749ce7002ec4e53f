#pragma once

#include <cstdint>

#include "quillon/Export.h"

namespace quillon {

class ICLogger;

/// The system's own, by another name of the same values: what a subscription's callback is called for.
enum EVT_SUBSCRIBE_NOTIFY_ACTION : std::int32_t {
    EvtSubscribeActionError = 0,
    EvtSubscribeActionDeliver = 1
};

/// The Windows Event Log API, bound at run time, and channels that are switched on while
/// somebody subscribes to them. Any thread. The forwarders pass their arguments on
/// unchanged; while IsAvailable() is false they fail (null, 0 or false) with last error 120.
class QUILLON_API EventLogProxy {
public:
    EventLogProxy() = delete;

    /// Binds, once a process; what it comes to is logged by `logger`.
    static void Initialize(ICLogger& logger);
    static bool IsAvailable();

    static void* EvtSubscribe(void* session, void* signalEvent, const wchar_t* channelPath,
                              const wchar_t* query, void* bookmark, void* context,
                              unsigned long (*callback)(EVT_SUBSCRIBE_NOTIFY_ACTION, void*, void*),
                              unsigned long flags);
    static int EvtClose(void* handle);
    static void* EvtCreateRenderContext(unsigned long count, const wchar_t** valuePaths, unsigned long flags);
    static int EvtRender(void* context, void* fragment, unsigned long flags, unsigned long bufferSize,
                         void* buffer, unsigned long* bufferUsed, unsigned long* propertyCount);
    static void* EvtCreateBookmark(const wchar_t* bookmarkXml);
    static int EvtUpdateBookmark(void* bookmark, void* event);
    static void* EvtQuery(void* session, const wchar_t* path, const wchar_t* query, unsigned long flags);
    static int EvtNext(void* resultSet, unsigned long count, void** events, unsigned long timeout,
                       unsigned long flags, unsigned long* returned);

    /// One more holder of a channel, whatever the case of its name; true when it is enabled. What was enabled
    /// before is left alone. False, too, for one more than 2^32 - 1.
    static bool EnableChannelIfRequired(const wchar_t* channel);
    /// One holder less; the last one disables what the proxy had enabled.
    static void DisableChannelIfRequired(const wchar_t* channel);

private:
    static void EnsureEventLogAvailable();
};

}  // namespace quillon
