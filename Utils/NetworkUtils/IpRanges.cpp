#include "quillon/IpRanges.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "base/IpAddress.h"

namespace quillon {

namespace {

using base::IpAddress;

struct Range {
    IpAddress low, high;
};

std::string_view WithoutBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Reads one piece of a list. A malformed one gives nothing, with the reason in Problem().
class PieceReader {
public:
    explicit PieceReader(IpRanges::Mapped mapped) : m_mapped(mapped) {}

    const std::string& Problem() const { return m_problem; }

    std::optional<Range> Read(std::string_view piece) {
        if (piece.empty()) return Refuse("it is empty");
        if (const std::size_t slash = piece.find('/'); slash != std::string_view::npos)
            return ReadNetwork(piece.substr(0, slash), piece.substr(slash + 1));
        const std::size_t dash = piece.find('-');
        const auto low = ReadAddress(piece.substr(0, dash));
        const auto high = dash == std::string_view::npos ? low : ReadAddress(piece.substr(dash + 1));
        if (!low || !high) return std::nullopt;
        if (low->size != high->size) return Refuse("its ends are of different families");
        return Range{std::min(*low, *high), std::max(*low, *high)};
    }

private:
    std::optional<Range> Refuse(std::string why) {
        m_problem = std::move(why);
        return std::nullopt;
    }

    std::optional<IpAddress> ReadAddress(std::string_view text) {
        text = WithoutBlanks(text);
        const auto address = base::ReadIpAddress(text);
        if (!address) {
            Refuse("'" + std::string(text) + "' is no address");
            return std::nullopt;
        }
        return m_mapped == IpRanges::Mapped::AsIpv4 ? base::Unmapped(*address) : *address;
    }

    std::optional<Range> ReadNetwork(std::string_view network, std::string_view lengthText) {
        const auto written = base::ReadIpAddress(WithoutBlanks(network));
        const auto address = ReadAddress(network);
        if (!written || !address) return std::nullopt;
        lengthText = WithoutBlanks(lengthText);
        std::size_t length = 0;
        const char* const end = lengthText.data() + lengthText.size();
        const auto [at, error] = std::from_chars(lengthText.data(), end, length);
        if (lengthText.empty() || error != std::errc() || at != end)
            return Refuse("'" + std::string(lengthText) + "' is no length");
        if (length > written->size * 8)
            return Refuse("the length is more than " + std::to_string(written->size * 8));
        const std::size_t dropped = (written->size - address->size) * 8;  // by the reading as IPv4
        if (length < dropped)
            return Refuse("a network of mapped addresses has a length of " + std::to_string(dropped) +
                          " at least");
        return Network(*address, length - dropped);
    }

    static Range Network(const IpAddress& address, std::size_t length) {
        Range range{address, address};
        for (std::size_t i = 0; i < address.size; ++i) {
            const std::size_t kept = std::clamp<std::size_t>(length, i * 8, i * 8 + 8) - i * 8;
            const auto free = static_cast<std::uint8_t>(0xFF >> kept);
            range.low.bytes[i] &= static_cast<std::uint8_t>(~free);
            range.high.bytes[i] |= free;
        }
        return range;
    }

    const IpRanges::Mapped m_mapped;
    std::string m_problem;
};

/// Sorts the ranges and joins those that overlap.
std::vector<Range> Joined(std::vector<Range> ranges) {
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.low < b.low; });
    std::vector<Range> joined;
    for (const Range& range : ranges) {
        if (joined.empty() || joined.back().high < range.low) {
            joined.push_back(range);
        } else {
            joined.back().high = std::max(joined.back().high, range.high);
        }
    }
    return joined;
}

}  // namespace

struct IpRanges::Set {
    std::vector<Range> ranges;  ///< in order, none overlapping another
    Mapped mapped = Mapped::AsIpv6;
};

IpRanges::IpRanges() = default;
IpRanges::IpRanges(std::shared_ptr<const Set> set) : m_set(std::move(set)) {}

std::optional<IpRanges> IpRanges::Read(std::string_view list, std::string& problem, Mapped mapped) {
    std::vector<Range> ranges;
    PieceReader reader(mapped);
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        const std::string_view piece = WithoutBlanks(list.substr(start, end - start));
        const auto range = reader.Read(piece);
        if (!range) {
            const auto number =
                1 + std::count(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(start), ',');
            problem =
                "piece " + std::to_string(number) + " '" + std::string(piece) + "': " + reader.Problem();
            return std::nullopt;
        }
        ranges.push_back(*range);
        start = end + 1;
    }
    return IpRanges(std::make_shared<const Set>(Set{Joined(std::move(ranges)), mapped}));
}

bool IpRanges::IsAddress(std::string_view text) { return base::ReadIpAddress(text).has_value(); }

std::optional<bool> IpRanges::Holds(std::string_view address) const {
    auto wanted = base::ReadIpAddress(address);
    if (!wanted) return std::nullopt;
    if (m_set == nullptr) return false;
    if (m_set->mapped == Mapped::AsIpv4) wanted = base::Unmapped(*wanted);
    const auto& ranges = m_set->ranges;
    const auto above =
        std::upper_bound(ranges.begin(), ranges.end(), *wanted,
                         [](const IpAddress& value, const Range& range) { return value < range.low; });
    return above != ranges.begin() && !(std::prev(above)->high < *wanted);
}

}  // namespace quillon
