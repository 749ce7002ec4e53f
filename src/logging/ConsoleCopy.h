#pragma once

#include <cstdint>
#include <string_view>

#include "platform/StandardStreamApi.h"

namespace quillon {

/// Copies log lines to the process's standard output and never waits for whoever reads it: a line that is not
/// taken at once is dropped and counted. The caller serialises.
class ConsoleCopy {
public:
    /// A stream that is closed now stays closed: what is opened later under its number is another thing.
    ConsoleCopy();

    void Write(std::string_view line, std::int64_t second) noexcept;

private:
    platform::StreamUse m_use;
    std::int64_t m_lookedAt = 0;  ///< the second in which the use was asked for last
    bool m_isLineTorn = false;
};

}  // namespace quillon
