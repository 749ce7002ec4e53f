#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "quillon/detail/SharedName.h"

namespace quillon {

/// Returns the shared name of a text with one use for the caller; null for the empty text. Each thread
/// finds its latest names again, so that rows which are built one after the other share theirs. A thread
/// keeps 256 names of at most 256 bytes, until it ends.
detail::SharedName* TakeName(std::string_view text);

/// How many cells a new list of this thread should have room for: as many as its last row had.
std::uint32_t UsualRowSize() noexcept;
void SetUsualRowSize(std::size_t size) noexcept;

}  // namespace quillon
