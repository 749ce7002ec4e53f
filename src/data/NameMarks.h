#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace quillon {

/// A byte drawn from each of a list's first names, so that a look-up touches only
/// the cells that may be meant: the others are in memory of their own each.
class NameMarks {
public:
    /// Names beyond these have no mark.
    static constexpr std::size_t kCapacity = 16;

    void Set(std::size_t index, const std::string& name) noexcept {
        if (index >= kCapacity) return;
        const std::size_t shift = index % kBytes * 8;
        std::uint64_t& word = m_words[index / kBytes];
        word = (word & ~(std::uint64_t{0xff} << shift)) | (std::uint64_t{MarkOf(name)} << shift);
    }

    void Clear() noexcept { m_words = {}; }

    /// Calls `matches` with the indices whose mark is that of `name`, and with few
    /// others that have been set, in rising order until it returns true.
    template <class Matches>
    bool AnyOf(const std::string& name, Matches matches) const {
        const std::uint64_t wanted = kOnes * MarkOf(name);
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            // A byte of `difference` is 0 where the marks are equal. Subtracting 1 from each byte borrows
            // into the top bit of a byte that was 0, and ~difference drops bytes whose top bit was set
            // before: what is left is one bit for each equal mark. The borrow out of an equal byte may
            // mark the byte above it too, which costs one needless comparison and misses none.
            const std::uint64_t difference = m_words[i] ^ wanted;
            std::uint64_t hits = (difference - kOnes) & ~difference & (kOnes << 7);
            for (; hits != 0; hits &= hits - 1) {
                if (matches(i * kBytes + static_cast<std::size_t>(std::countr_zero(hits)) / 8)) return true;
            }
        }
        return false;
    }

private:
    static constexpr std::size_t kBytes = sizeof(std::uint64_t);
    static constexpr std::uint64_t kOnes = 0x0101010101010101;

    /// Never 0, which is the mark of no name.
    static std::uint8_t MarkOf(const std::string& name) noexcept {
        if (name.empty()) return 0x80;
        const auto first = static_cast<unsigned char>(name.front());
        const auto last = static_cast<unsigned char>(name.back());
        return static_cast<std::uint8_t>(0x80 | (name.size() * 37 + last * 5u + first));
    }

    std::array<std::uint64_t, kCapacity / kBytes> m_words{};
};

/// Compares two names. Texts of 4 to 16 bytes take two comparisons of words that may overlap, where a
/// call of memcmp costs more.
inline bool EqualNames(const std::string& left, const std::string& right) noexcept {
    const std::size_t size = left.size();
    if (size != right.size()) return false;
    const auto equalEnds = [&]<class Word>(Word) {
        const auto at = [](const std::string& text, std::size_t offset) {
            Word word;
            std::memcpy(&word, text.data() + offset, sizeof(word));
            return word;
        };
        const std::size_t tail = size - sizeof(Word);
        return at(left, 0) == at(right, 0) && at(left, tail) == at(right, tail);
    };
    if (size < sizeof(std::uint32_t) || size > 2 * sizeof(std::uint64_t)) return left == right;
    return size < sizeof(std::uint64_t) ? equalEnds(std::uint32_t{}) : equalEnds(std::uint64_t{});
}

}  // namespace quillon
