#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "data/NameCache.h"

namespace quillon {

/// Keeps a shared name and gives uses of it away, which are counted in bulk: an atomic operation for each
/// cell would cost more than all else that a cell's name does.
class HeldName {
public:
    HeldName() = default;
    explicit HeldName(std::string_view text) : m_name(TakeName(text)) {}
    HeldName(HeldName&& other) noexcept
        : m_name(std::exchange(other.m_name, nullptr)), m_spare(std::exchange(other.m_spare, 0)) {}
    HeldName& operator=(HeldName&& other) noexcept {
        std::swap(m_name, other.m_name);
        std::swap(m_spare, other.m_spare);
        return *this;
    }
    ~HeldName() { detail::DropUses(m_name, m_spare + 1); }

    bool Equals(std::string_view text) const { return Text() == text; }
    std::string_view Text() const {
        return m_name != nullptr ? std::string_view(m_name->text) : std::string_view();
    }

    /// Returns the name with one use for the caller; null for the empty name.
    detail::SharedName* Use() noexcept {
        if (m_spare == 0) {
            detail::TakeUses(m_name, kBulk);
            m_spare = kBulk;
        }
        --m_spare;
        return m_name;
    }

private:
    static constexpr std::uint32_t kBulk = 256;

    detail::SharedName* m_name = nullptr;
    std::uint32_t m_spare = 0;  // uses that are counted already and not given away yet
};

}  // namespace quillon
