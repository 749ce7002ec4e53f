#include "quillon/Version.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/NumberText.h"

namespace quillon {

Version::Version(unsigned long major, unsigned long minor, unsigned long patch, unsigned long build)
    : m_parts{static_cast<std::uint32_t>(major), static_cast<std::uint32_t>(minor),
              static_cast<std::uint32_t>(patch), static_cast<std::uint32_t>(build)} {}

Version::Version(const std::string& text) {
    const auto dots = std::count(text.begin(), text.end(), '.');
    m_valid = dots <= 3;
    if (!m_valid) return;

    std::string_view rest = text;
    std::ptrdiff_t read = 0;
    while (read < 4) {
        const std::optional<std::uint64_t> number = base::TakeUnsigned(rest);
        if (!number) break;
        m_parts[read++] = static_cast<std::uint32_t>(*number);
        if (!rest.starts_with('.')) break;
        rest.remove_prefix(1);
    }
    m_valid = read == dots + 1;
}

bool Version::Valid() const { return m_valid; }
int Version::Major() const { return static_cast<int>(m_parts[0]); }
int Version::Minor() const { return static_cast<int>(m_parts[1]); }
int Version::Patch() const { return static_cast<int>(m_parts[2]); }
int Version::Build() const { return static_cast<int>(m_parts[3]); }
void Version::SetBuild(int build) { m_parts[3] = static_cast<std::uint32_t>(build); }

std::string Version::to_string() const {
    std::string text;
    for (const std::uint32_t part : m_parts) {
        if (!text.empty()) text += '.';
        text += std::to_string(part);
    }
    return text;
}

int Version::DeepCompare(const Version& other) const {
    for (int i = 0; i < 4; ++i) {
        if (m_parts[i] != other.m_parts[i]) return m_parts[i] < other.m_parts[i] ? i - 4 : 4 - i;
    }
    return 0;
}

int Version::Compare(const Version& other) const {
    const int difference = DeepCompare(other);
    return (difference > 0) - (difference < 0);
}

std::strong_ordering Version::operator<=>(const Version& other) const { return DeepCompare(other) <=> 0; }
bool Version::operator==(const Version& other) const { return DeepCompare(other) == 0; }

std::ostream& operator<<(std::ostream& stream, const Version& version) {
    return stream << version.to_string();
}

}  // namespace quillon
