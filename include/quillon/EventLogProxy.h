#pragma once

#include <type_traits>

#include "quillon/Export.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

class ICLogger;

/// Calls the functions of the Windows Event Log, bound at run time from wevtapi.dll, and keeps
/// channels enabled while somebody subscribes to them. Thread-safe once Initialize() has returned.
///
/// Each forwarder passes its arguments unchanged to the function of its name; texts are UTF-16, and
/// the results, failures and last errors are that function's. Nothing is logged. While IsAvailable()
/// is false a forwarder returns null or 0 with the last error 120 (ERROR_CALL_NOT_IMPLEMENTED).
/// Outside Windows channels in memory answer. EvtHandle owns what the forwarders return, and
/// EventLogReader reads whole channels.
///
/// @code
/// const wchar_t* const channel = L"Microsoft-Windows-DNS-Client/Operational";
/// EventLogProxy::Initialize(*CLogger::GetInstance());
/// if (EventLogProxy::EnableChannelIfRequired(channel)) {
///     const EvtHandle results(EventLogProxy::EvtQuery(nullptr, channel, L"*", 1));  // EvtQueryChannelPath
///     if (!results) std::cout << StringUtils::GetLastErrorAsString() << '\n';
///     EventLogProxy::DisableChannelIfRequired(channel);
/// }
/// @endcode
class QUILLON_API EventLogProxy {
public:
    EventLogProxy() = delete;

    /// Binds the functions and logs the result: a Debug entry, or one Warn entry with the reason.
    /// Further calls do nothing. The logger is not kept.
    static void Initialize(ICLogger& logger);
    /// Returns whether the functions are bound; false before Initialize().
    static bool IsAvailable();

    /// Forwards to the function of that name. The system calls `callback` on a thread of its own; an
    /// exception must not leave it.
    static void* EvtSubscribe(void* session, void* signalEvent, const wchar_t* channelPath,
                              const wchar_t* query, void* bookmark, void* context,
                              unsigned long (*callback)(windows::EVT_SUBSCRIBE_NOTIFY_ACTION, void*, void*),
                              unsigned long flags);
    /// Does the same with a callback that takes the type of <winevt.h>.
    template <class Action>
    requires(
        std::is_enum_v<Action> &&
        sizeof(Action) ==
            sizeof(
                windows::EVT_SUBSCRIBE_NOTIFY_ACTION)) static void* EvtSubscribe(void* session,
                                                                                 void* signalEvent,
                                                                                 const wchar_t* channelPath,
                                                                                 const wchar_t* query,
                                                                                 void* bookmark,
                                                                                 void* context,
                                                                                 unsigned long (*callback)(
                                                                                     Action, void*, void*),
                                                                                 unsigned long flags) {
        using Callback = unsigned long (*)(windows::EVT_SUBSCRIBE_NOTIFY_ACTION, void*, void*);
        return EvtSubscribe(session, signalEvent, channelPath, query, bookmark, context,
                            reinterpret_cast<Callback>(callback), flags);
    }
    /// Forwards to the function of that name; so do the operations below. 1 is success.
    static int EvtClose(void* handle);
    static void* EvtCreateRenderContext(unsigned long count, const wchar_t** valuePaths, unsigned long flags);
    static int EvtRender(void* context, void* fragment, unsigned long flags, unsigned long bufferSize,
                         void* buffer, unsigned long* bufferUsed, unsigned long* propertyCount);
    static void* EvtCreateBookmark(const wchar_t* bookmarkXml);
    static int EvtUpdateBookmark(void* bookmark, void* event);
    static void* EvtQuery(void* session, const wchar_t* path, const wchar_t* query, unsigned long flags);
    static int EvtNext(void* resultSet, unsigned long count, void** events, unsigned long timeout,
                       unsigned long flags, unsigned long* returned);

    /// Enables a channel, whose name is case-insensitive, for one more holder, and returns whether it
    /// is enabled. A channel that was enabled before the first holder is left as it is. Returns false
    /// when the interface is not available, the channel does not exist or cannot be enabled (a Debug entry),
    /// or it has 2^32 - 1 holders. What is done is logged at Debug on the registered logger, after the lock
    /// on the channels is released.
    static bool EnableChannelIfRequired(const wchar_t* channel);
    /// Takes one holder away; after the last one the channel that this class has enabled is disabled. A
    /// channel without holders is left alone. A failure logs the Warn entry "Failed to disable Windows
    /// Event Log channel '%s' - this channel should be disabled manually".
    static void DisableChannelIfRequired(const wchar_t* channel);

private:
    static void EnsureEventLogAvailable();
};

}  // namespace quillon
