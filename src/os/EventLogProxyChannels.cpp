#include <array>

#include "base/Utf.h"
#include "os/DeferredLog.h"
#include "os/EventLogState.h"
#include "os/HolderCount.h"
#include "platform/Handle.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/EventLogProxy.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using platform::EvtVariant;

struct ConfigTraits {
    using Type = void*;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type value) noexcept { EventLogProxy::EvtClose(value); }
};
using ChannelConfig = platform::Handle<ConfigTraits>;

const platform::EvtFunctions& Functions() { return EventLogState::Get().functions; }

/// A channel by its texts, which are made before the system is called: without memory nothing must be
/// switched on that has no holder.
struct Channel {
    explicit Channel(const wchar_t* its)
        : path(its),
          name(its == nullptr ? "" : base::ToUtf8(its)),
          key(StringUtils::ToUppercase(name)),
          shown(LogText::OneLine(name)) {}

    const wchar_t* const path;
    const std::string name, key, shown;
};

ChannelConfig OpenConfig(const Channel& channel) {
    return ChannelConfig(Functions().openChannelConfig(nullptr, channel.path, 0));
}

/// Returns whether the channel is enabled; nothing when the system does not say.
std::optional<bool> IsEnabled(const ChannelConfig& config) {
    std::array<EvtVariant, 8> value;  // 128 bytes, as the system has always been given
    unsigned long used = 0;
    if (Functions().getChannelConfigProperty(config.Get(), platform::kEvtChannelConfigEnabled, 0,
                                             sizeof value, value.data(), &used) == 0) {
        return std::nullopt;
    }
    return value[0].boolean == 1;
}

bool SaveEnabled(const ChannelConfig& config, bool isEnabled) {
    EvtVariant value;
    value.boolean = isEnabled ? 1 : 0;
    value.type = platform::EvtType::Boolean;
    return Functions().setChannelConfigProperty(config.Get(), platform::kEvtChannelConfigEnabled, 0,
                                                &value) != 0 &&
           Functions().saveChannelConfig(config.Get(), 0) != 0;
}

/// Enables the channel unless it is enabled, and returns whether it is enabled now; `switchedOn` says
/// whether this call has done it. The caller holds the channel lock over the calls of the system, so that
/// another thread cannot disable the channel between them, and `log` keeps the entries until the lock is
/// released.
bool SwitchOn(const Channel& channel, bool& switchedOn, ICLogger& log) {
    const ChannelConfig config = OpenConfig(channel);
    if (!config) return false;
    const auto isEnabled = IsEnabled(config);
    if (!isEnabled) return false;
    if (*isEnabled) return true;
    switchedOn = SaveEnabled(config, true);
    if (switchedOn) {
        log.Debug("Enabled Windows Event Log channel '%s' for subscriptions", channel.shown.c_str());
    } else {
        log.Debug(
            "Failed to enable Windows Event Log channel '%s' - subscriptions to this channel will not be "
            "possible",
            channel.shown.c_str());
    }
    return switchedOn;
}

void SwitchOff(const Channel& channel, ICLogger& log) {
    const ChannelConfig config = OpenConfig(channel);
    if (!config) return;
    if (SaveEnabled(config, false)) {
        log.Debug("Disabled Windows Event Log channel '%s' for subscriptions", channel.shown.c_str());
    } else {
        log.Warn(
            "Failed to disable Windows Event Log channel '%s' - this channel should be disabled manually",
            channel.shown.c_str());
    }
}

bool AddChannelHolder(const Channel& channel, ICLogger& log) {
    EventLogState& state = EventLogState::Get();
    const std::lock_guard lock(state.channelLock);
    const auto [entry, isNew] = state.channels.try_emplace(channel.key, 1);
    if (!isNew) return AddHolder(entry->second);
    bool switchedOn = false;
    const DestructorFunctor forget([&, place = entry] {
        if (!switchedOn) state.channels.erase(place);
    });
    return SwitchOn(channel, switchedOn, log);
}

void RemoveChannelHolder(const Channel& channel, ICLogger& log) {
    EventLogState& state = EventLogState::Get();
    const std::lock_guard lock(state.channelLock);
    const auto found = state.channels.find(channel.key);
    if (found == state.channels.end() || --found->second > 0) return;
    const DestructorFunctor forget([&] { state.channels.erase(found); });
    SwitchOff(channel, log);
}

}  // namespace

bool EventLogProxy::EnableChannelIfRequired(const wchar_t* channel) {
    if (!IsAvailable()) return false;
    DeferredLog log;
    const bool isEnabled = AddChannelHolder(Channel(channel), log);
    log.WriteTo(detail::RegisteredLoggerIfAny());
    return isEnabled;
}

void EventLogProxy::DisableChannelIfRequired(const wchar_t* channel) {
    if (!IsAvailable()) return;
    DeferredLog log;
    RemoveChannelHolder(Channel(channel), log);
    log.WriteTo(detail::RegisteredLoggerIfAny());
}

}  // namespace quillon
