#pragma once

#include <log4cplus/layout.h>

#include "logging/LineFormat.h"

namespace quillon {

/// Writes lines as log4cplus's pattern "%d{%Y-%m-%d %H:%M:%S.%q} [%5T] %-5p - %m%n" does, by LineFormat.
class LineLayout final : public log4cplus::Layout {
public:
    LineLayout() = default;
    ~LineLayout() override;
    LineLayout(const LineLayout&) = delete;
    LineLayout& operator=(const LineLayout&) = delete;

    void formatAndAppend(log4cplus::tostream& output,
                         const log4cplus::spi::InternalLoggingEvent& event) override;

    /// Returns the parts of an event; they live as long as the event keeps its text.
    static LineParts PartsOf(const log4cplus::spi::InternalLoggingEvent& event);
};

}  // namespace quillon
