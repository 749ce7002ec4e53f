#include "base/WorkingSet.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace quillon::base {

namespace {

constexpr int kMoreAttempts = 11;
constexpr long long kPageSize = 4096;
constexpr std::uint64_t kShared = 0x100;

}  // namespace

long long CountPrivateBytes(const WorkingSetQuery& query) {
    std::array<std::uint64_t, 2> probe{};
    if (query(probe) != kBadLength || probe[0] == 0) return 0;

    std::vector<std::uint64_t> buffer(static_cast<std::size_t>(probe[0]) + 1);
    std::uint32_t code = query(buffer);
    for (int i = 0; code == kBadLength && i < kMoreAttempts; ++i) {
        buffer.resize(static_cast<std::size_t>(buffer[0]) + 1);
        code = query(buffer);
    }
    if (code != 0) return 0;

    const auto entries = std::span(buffer).subspan(1);
    const auto reported = entries.first(std::min<std::size_t>(entries.size(), buffer[0]));
    return kPageSize * std::count_if(reported.begin(), reported.end(),
                                     [](std::uint64_t entry) { return (entry & kShared) == 0; });
}

}  // namespace quillon::base
