#include "logging/LineLayout.h"

#include <log4cplus/loglevel.h>
#include <log4cplus/spi/loggingevent.h>

#include <chrono>
#include <string>

#include "logging/Log4cplusEntry.h"

namespace quillon {

LineLayout::~LineLayout() = default;

void LineLayout::formatAndAppend(log4cplus::tostream& output,
                                 const log4cplus::spi::InternalLoggingEvent& event) {
    std::string line;
    LineFormat().Format(PartsOf(event), line);
    output << line;
}

LineParts LineLayout::PartsOf(const log4cplus::spi::InternalLoggingEvent& event) {
    ThreadName();  // which the event takes over when it is first asked for it
    const auto sinceEpoch = event.getTimestamp().time_since_epoch();
    using Time = std::chrono::system_clock::time_point;
    return {Time(std::chrono::duration_cast<Time::duration>(sinceEpoch)), event.getThread2(),
            log4cplus::getLogLevelManager().toString(event.getLogLevel()), event.getMessage()};
}

}  // namespace quillon
