#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace quillon::base {

constexpr std::uint32_t kBadLength = 24;

/// Asks once for a working set: fills the buffer with the number of entries and as
/// many entries as fit, a word each, of which bit 8 marks a shared page. Returns 0, or
/// the system's code: kBadLength when the buffer is too short for all.
using WorkingSetQuery = std::function<std::uint32_t(std::span<std::uint64_t> buffer)>;

/// Bytes of the pages that are not shared. The set may grow from one query to the next;
/// 0 when it keeps growing, or cannot be told.
long long CountPrivateBytes(const WorkingSetQuery& query);

}  // namespace quillon::base
