#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quillon {

/// Writes at most `room` identifiers and says how many; nothing on failure.
using IdQuery = std::function<std::optional<std::size_t>(std::uint32_t* ids, std::size_t room)>;

/// Asks again with twice the room while the answer fills it; on failure nothing is appended.
void AppendIds(const IdQuery& query, std::vector<unsigned long>& ids);

}  // namespace quillon
