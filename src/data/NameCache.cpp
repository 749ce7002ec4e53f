#include "data/NameCache.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "data/TextHash.h"
#include "platform/ThreadSlot.h"

namespace quillon {
namespace {

using detail::SharedName;

constexpr std::size_t kLongestKept = 256;
constexpr std::size_t kSets = 64, kWays = 4;  // the upper six bits of a hash choose the set
/// Uses are taken from a name in bulk: an atomic operation for each cell would cost more than the look-up.
constexpr std::uint32_t kBulk = 256;
constexpr std::uint32_t kLargestUsualRow = 32;

std::string BindText(const std::string& text) {
    if (text.find('-') == std::string::npos) return {};
    std::string bindText = text;
    std::replace(bindText.begin(), bindText.end(), '-', '_');
    return bindText;
}

SharedName* MakeName(std::string_view text, std::size_t uses) {
    std::string name(text);
    std::string bindText = BindText(name);
    const auto hash = static_cast<std::size_t>(TextHash(text));
    return new SharedName{std::move(name), std::move(bindText), hash, uses};
}

/// Mixes the size and the ends of a text that is not empty. The upper bits are the best.
std::uint64_t QuickHash(std::string_view text) {
    std::uint64_t head = 0, tail = 0;
    const std::size_t taken = std::min(text.size(), sizeof(head));
    if (taken == sizeof(head)) {
        std::memcpy(&head, text.data(), sizeof(head));
        std::memcpy(&tail, text.data() + text.size() - sizeof(tail), sizeof(tail));
    } else {
        for (const char character : text) head = head << 8 | static_cast<unsigned char>(character);
    }
    std::uint64_t mixed = (head ^ text.size()) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ mixed >> 32 ^ tail) * 0xD6E8FEB86659FD93U;
    return mixed;
}

class NameCache {
public:
    NameCache() = default;
    NameCache(const NameCache&) = delete;
    NameCache& operator=(const NameCache&) = delete;
    ~NameCache() {
        for (Set& set : m_sets) {
            for (Slot& slot : set.slots) detail::DropUses(slot.name, slot.spare + 1);
        }
    }

    /// Rows mostly have the same names in the same order, so that the name which followed the last one
    /// before is tried first.
    SharedName* Take(std::string_view text) {
        Slot* const expected = m_last->follower;
        const bool follows = expected != nullptr && expected->name != nullptr &&
                             detail::EqualTexts(expected->name->text, text);
        Slot& slot = follows ? *expected : Find(text);
        m_last->follower = &slot;
        m_last = &slot;
        return Use(slot);
    }

    std::uint32_t usualRowSize = 1;

private:
    struct Slot {
        SharedName* name = nullptr;
        Slot* follower = nullptr;  // what came after it last; null at first
        std::uint32_t hash = 0;
        std::uint32_t spare = 0;  // uses that are counted already and not given away yet
    };
    struct Set {
        std::array<Slot, kWays> slots;
    };

    /// Returns the slot of a name, which it makes if there is none.
    Slot& Find(std::string_view text) {
        const std::uint64_t mixed = QuickHash(text);
        const auto hash = static_cast<std::uint32_t>(mixed >> 24);
        Set& set = m_sets[mixed >> 58];
        for (Slot& slot : set.slots) {
            if (slot.hash == hash && slot.name != nullptr && detail::EqualTexts(slot.name->text, text))
                return slot;
        }
        SharedName* const name = MakeName(text, 1);
        Slot& replaced = set.slots[m_next++ % kWays];
        detail::DropUses(replaced.name, replaced.spare + 1);
        replaced.name = name;
        replaced.hash = hash;
        replaced.spare = 0;
        return replaced;
    }

    static SharedName* Use(Slot& slot) noexcept {
        if (slot.spare == 0) {
            detail::TakeUses(slot.name, kBulk);
            slot.spare = kBulk;
        }
        --slot.spare;
        return slot.name;
    }

    std::array<Set, kSets> m_sets{};
    Slot m_none;  // the last one of a thread that has no names yet
    Slot* m_last = &m_none;
    std::size_t m_next = 0;
};

const platform::ThreadSlot& TheSlot() {
    static_assert(std::is_trivially_destructible_v<platform::ThreadSlot>);
    static const platform::ThreadSlot slot([](void* cache) { delete static_cast<NameCache*>(cache); });
    return slot;
}

NameCache* ExistingCache() noexcept { return static_cast<NameCache*>(TheSlot().Get()); }

/// Returns null when the thread can have none.
NameCache* ThreadCache() {
    if (NameCache* const cache = ExistingCache()) return cache;
    auto made = std::make_unique<NameCache>();
    return TheSlot().Set(made.get()) ? made.release() : nullptr;
}

}  // namespace

void detail::DeleteName(SharedName* name) noexcept { delete name; }

SharedName* TakeName(std::string_view text) {
    if (text.empty()) return nullptr;
    NameCache* const cache = text.size() <= kLongestKept ? ThreadCache() : nullptr;
    return cache != nullptr ? cache->Take(text) : MakeName(text, 1);
}

std::uint32_t UsualRowSize() noexcept {
    const NameCache* const cache = ExistingCache();
    return cache != nullptr ? cache->usualRowSize : 1;
}

void SetUsualRowSize(std::size_t size) noexcept {
    if (NameCache* const cache = ExistingCache())
        cache->usualRowSize = static_cast<std::uint32_t>(std::clamp<std::size_t>(size, 1, kLargestUsualRow));
}

}  // namespace quillon
