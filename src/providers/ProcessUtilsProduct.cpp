#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "quillon/ProcessUtils.h"

namespace quillon {

namespace {

/// ([Mm]icrosoft).{0,4}\s*([Ww]indows).{0,4}\s*([Oo]perating).{0,4}\s*([Ss]ystem) as an
/// automaton that follows all possible matches at once, a bit a state. A state is an
/// item of the pattern that is next to be read, the last one that all were. Time is
/// linear in the text, and there is no stack.
class ProductPattern {
public:
    constexpr ProductPattern() {
        AddWord("Mmicrosoft");
        for (const char* const word : {"Wwindows", "Ooperating", "Ssystem"}) {
            AddGap();
            AddWord(word);
        }
    }

    [[nodiscard]] constexpr bool IsIn(std::string_view text) const {
        std::uint64_t states = 0;
        for (const char c : text) {
            states |= 1;  // a match may begin anywhere
            const std::uint64_t read = states & m_accepts[static_cast<unsigned char>(c)];
            states = Skipped((read & ~m_repeats) << 1 | (read & m_repeats));
            if ((states >> m_items & 1) != 0) return true;
        }
        return false;
    }

private:
    static constexpr int kAnyCharacters = 4;

    /// Items that need not be read are passed.
    [[nodiscard]] constexpr std::uint64_t Skipped(std::uint64_t states) const {
        for (int i = 0; i <= kAnyCharacters && (states & m_optional) != 0; ++i)
            states |= (states & m_optional) << 1;
        return states;
    }

    constexpr void Accept(char c) { m_accepts[static_cast<unsigned char>(c)] |= std::uint64_t{1} << m_items; }

    /// The first letter in both cases, then the rest.
    constexpr void AddWord(std::string_view word) {
        Accept(word[0]);
        for (const char c : word.substr(1)) {
            Accept(c);
            ++m_items;
        }
    }

    constexpr void AddGap() {
        for (int i = 0; i < kAnyCharacters; ++i) {
            for (std::uint64_t& accepts : m_accepts) accepts |= std::uint64_t{1} << m_items;
            m_accepts['\n'] &= ~(std::uint64_t{1} << m_items);
            m_accepts['\r'] &= ~(std::uint64_t{1} << m_items);
            m_optional |= std::uint64_t{1} << m_items++;
        }
        for (const char c : std::string_view(" \t\n\v\f\r")) Accept(c);
        m_repeats |= std::uint64_t{1} << m_items;
        m_optional |= std::uint64_t{1} << m_items++;
    }

    std::array<std::uint64_t, 256> m_accepts{};  ///< the items that read a character
    std::uint64_t m_optional = 0;
    std::uint64_t m_repeats = 0;
    int m_items = 0;
};

constexpr ProductPattern kOperatingSystem;

static_assert(kOperatingSystem.IsIn("Microsoft Windows Operating System"));

}  // namespace

bool ProcessUtils::IsOsProcess(const std::string& productName) { return kOperatingSystem.IsIn(productName); }

}  // namespace quillon
