#include "quillon/EventLogProxy.h"

#include "base/ErrorCodes.h"
#include "os/EntryPointBinder.h"
#include "os/EventLogState.h"
#include "platform/ErrorText.h"
#include "quillon/ICLogger.h"

namespace quillon {

namespace {

using platform::EvtFunctions;

std::string BindFunctions(EvtFunctions& functions) {
    if (!IsAtLeastVersion60()) return kTooOldSystem;
    const auto directory = platform::Procedures().systemDirectory();
    HINSTANCE module = nullptr;
    if (directory) {
        const char* const separator = directory->ends_with('\\') ? "" : "\\";
        module = platform::Procedures().loadModule(*directory + separator + "wevtapi.dll");
    }
    if (module == nullptr) return "Failed to load wevtapi.dll";
    EntryPointBinder(module).Bind("EvtSeek", functions.seek);
    EntryPointBinder(module)
        .Bind("EvtOpenPublisherMetadata", functions.openPublisherMetadata)
        .Bind("EvtFormatMessage", functions.formatMessage);
    return EntryPointBinder(module)
        .Bind("EvtSubscribe", functions.subscribe)
        .Bind("EvtClose", functions.close)
        .Bind("EvtCreateRenderContext", functions.createRenderContext)
        .Bind("EvtRender", functions.render)
        .Bind("EvtCreateBookmark", functions.createBookmark)
        .Bind("EvtUpdateBookmark", functions.updateBookmark)
        .Bind("EvtQuery", functions.query)
        .Bind("EvtNext", functions.next)
        .Bind("EvtOpenChannelConfig", functions.openChannelConfig)
        .Bind("EvtGetChannelConfigProperty", functions.getChannelConfigProperty)
        .Bind("EvtSetChannelConfigProperty", functions.setChannelConfigProperty)
        .Bind("EvtSaveChannelConfig", functions.saveChannelConfig)
        .Reason();
}

/// Binds the functions and returns why that failed, or the empty text; nothing when they were bound
/// before.
std::optional<std::string> BindOnce() {
    EventLogState& state = EventLogState::Get();
    const std::lock_guard lock(state.initialization);
    if (state.isInitialized) return std::nullopt;
    std::string reason = BindFunctions(state.functions);
    state.isAvailable = reason.empty();
    state.isInitialized = true;
    return reason;
}

/// Calls a bound function with its arguments as they are. Without the interface it fails as a call that
/// the system does not implement.
template <auto Member, class... Arguments>
auto Forward(Arguments... arguments) {
    const EventLogState& state = EventLogState::Get();
    using Result = decltype((state.functions.*Member)(arguments...));
    if (state.isAvailable) return (state.functions.*Member)(arguments...);
    platform::SetLastErrorCode(base::kCallNotImplemented);
    return Result{};
}

}  // namespace

EventLogState& EventLogState::Get() {
    static EventLogState& state = *new EventLogState;
    return state;
}

void EventLogState::ForgetFunctions() {
    const std::lock_guard lock(initialization);
    isInitialized = false;
    isAvailable = false;
}

void EventLogProxy::Initialize(ICLogger& logger) {
    const auto reason = BindOnce();
    if (!reason) return;
    if (reason->empty()) {
        logger.Debug("Initialized EventLogProxy - event log subscription functionality is available");
    } else {
        logger.Warn("%s - event log subscription functionality will not be available", reason->c_str());
    }
}

bool EventLogProxy::IsAvailable() { return EventLogState::Get().isAvailable; }

void* EventLogProxy::EvtSubscribe(void* session, void* signalEvent, const wchar_t* channelPath,
                                  const wchar_t* query, void* bookmark, void* context,
                                  unsigned long (*callback)(EVT_SUBSCRIBE_NOTIFY_ACTION, void*, void*),
                                  unsigned long flags) {
    return Forward<&EvtFunctions::subscribe>(session, signalEvent, channelPath, query, bookmark, context,
                                             reinterpret_cast<EvtFunctions::SubscribeCallback>(callback),
                                             flags);
}

int EventLogProxy::EvtClose(void* handle) { return Forward<&EvtFunctions::close>(handle); }

void* EventLogProxy::EvtCreateRenderContext(unsigned long count, const wchar_t** valuePaths,
                                            unsigned long flags) {
    return Forward<&EvtFunctions::createRenderContext>(count, valuePaths, flags);
}

int EventLogProxy::EvtRender(void* context, void* fragment, unsigned long flags, unsigned long bufferSize,
                             void* buffer, unsigned long* bufferUsed, unsigned long* propertyCount) {
    return Forward<&EvtFunctions::render>(context, fragment, flags, bufferSize, buffer, bufferUsed,
                                          propertyCount);
}

void* EventLogProxy::EvtCreateBookmark(const wchar_t* bookmarkXml) {
    return Forward<&EvtFunctions::createBookmark>(bookmarkXml);
}

int EventLogProxy::EvtUpdateBookmark(void* bookmark, void* event) {
    return Forward<&EvtFunctions::updateBookmark>(bookmark, event);
}

void* EventLogProxy::EvtQuery(void* session, const wchar_t* path, const wchar_t* query, unsigned long flags) {
    return Forward<&EvtFunctions::query>(session, path, query, flags);
}

int EventLogProxy::EvtNext(void* resultSet, unsigned long count, void** events, unsigned long timeout,
                           unsigned long flags, unsigned long* returned) {
    return Forward<&EvtFunctions::next>(resultSet, count, events, timeout, flags, returned);
}

void EventLogProxy::EnsureEventLogAvailable() {}

}  // namespace quillon
