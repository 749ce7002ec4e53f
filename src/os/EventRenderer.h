#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "platform/EventLogTypes.h"
#include "quillon/EventLogReader.h"
#include "quillon/EvtHandle.h"

namespace quillon {

/// Reads the events of one reading, with one render context and one buffer for all of them. One thread
/// at a time.
class EventRenderer {
public:
    explicit EventRenderer(bool withMessage) : m_withMessage(withMessage) {}

    /// Reads the event, whose handle stays the caller's. False with the reason as the last error.
    bool Read(void* event, LogEvent& result);

private:
    bool Render(void* context, void* event, unsigned long flags, unsigned long& propertyCount);
    bool ReadValues(void* event, LogEvent& result);
    bool ReadXml(void* event, LogEvent& result);
    std::string User(const platform::EvtVariant& value) const;
    void* Publisher(const std::string& provider);
    std::string Message(void* event, const std::string& provider);

    const bool m_withMessage;
    EvtHandle m_context;
    std::map<std::string, EvtHandle> m_publishers;
    std::chrono::steady_clock::time_point m_publishersSince;
    /// Holds an array of variants followed by what they point to, or a text.
    std::vector<platform::EvtVariant> m_buffer = std::vector<platform::EvtVariant>(128);
};

/// Returns whether a failure to render is of the moment and not of the event, which can then be read
/// another time: there is no memory, or no connection to the service of the event log.
bool IsPassingFailure(std::uint32_t code);

}  // namespace quillon
