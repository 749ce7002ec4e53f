#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "quillon/Export.h"

namespace quillon::detail {

/// Keeps a name that the cells of many rows share, with its bind name. It never changes; the cells
/// count their uses of it, on whatever threads they are, and the last use deletes it.
struct SharedName {
    const std::string text;      ///< never empty: an empty name is a null pointer
    const std::string bindText;  ///< empty when it equals the name
    const std::size_t hash;      ///< of `text`
    std::atomic<std::size_t> uses;
};

QUILLON_API void DeleteName(SharedName* name) noexcept;

inline void TakeUses(SharedName* name, std::size_t count = 1) noexcept {
    if (name != nullptr) name->uses.fetch_add(count, std::memory_order_relaxed);
}

inline void DropUses(SharedName* name, std::size_t count = 1) noexcept {
    if (name == nullptr) return;
    if (name->uses.fetch_sub(count, std::memory_order_acq_rel) == count) DeleteName(name);
}

/// Compares two texts. Those of 4 to 16 bytes take two comparisons of words that may overlap, where a
/// call of memcmp costs more.
inline bool EqualTexts(std::string_view left, std::string_view right) noexcept {
    const std::size_t size = left.size();
    if (size != right.size()) return false;
    const auto equalEnds = [&](auto word) {
        auto other = word;
        const auto equalAt = [&](std::size_t offset) {
            std::memcpy(&word, left.data() + offset, sizeof(word));
            std::memcpy(&other, right.data() + offset, sizeof(other));
            return word == other;
        };
        return equalAt(0) && equalAt(size - sizeof(word));
    };
    if (size < sizeof(std::uint32_t) || size > 2 * sizeof(std::uint64_t)) return left == right;
    return size < sizeof(std::uint64_t) ? equalEnds(std::uint32_t{}) : equalEnds(std::uint64_t{});
}

}  // namespace quillon::detail
