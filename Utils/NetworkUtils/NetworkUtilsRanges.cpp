#include <algorithm>
#include <cstring>
#include <string_view>

#include "Utils/internal/NetworkPatterns.h"
#include "base/Ipv4Text.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/NetworkUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

/// Where the number lies in a sockaddr_in, on every system.
constexpr std::size_t kIpv4AddressField = 4;

/// Returns the address in the byte order in which it is stored.
std::uint32_t AddressField(const void* address) {
    std::uint32_t field = 0;
    std::memcpy(&field, static_cast<const char*>(address) + kIpv4AddressField, sizeof field);
    return field;
}

std::string WithoutSpaces(std::string_view text) {
    std::string copy(text);
    StringUtils::TrimAllSpaces(copy);
    return copy;
}

bool HasColon(std::string_view text) { return text.find(':') != std::string_view::npos; }

/// Returns the address in host byte order; nothing, with a log entry, when the text is none.
std::optional<std::uint32_t> ReadWanted(const std::string& text) {
    const std::string trimmed = WithoutSpaces(text);
    const bool isIpv6 = HasColon(trimmed);
    if (const auto address = base::ReadIpv4<base::Ipv4OfSystem>(trimmed)) return address;
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        if (isIpv6) {
            logger->Warn("Unsupported IPv6 address supplied to IpInRange(): '%s'",
                         LogText::OneLine(text.c_str()).c_str());
        } else {
            logger->Error("IP address supplied to IpInRange() is not a valid IPv4 address: '%s'",
                          LogText::OneLine(text.c_str()).c_str());
        }
    }
    return std::nullopt;
}

enum class Piece { Range, Ipv6, Malformed };

/// Reads one piece of the list; a failure is logged.
Piece ReadPiece(std::string_view piece, Ipv4Range& range) {
    auto read = ReadIpv4Range(piece);  // most have no spaces
    std::string trimmed;
    if (!read) read = ReadIpv4Range(trimmed = WithoutSpaces(piece));
    if (read) {
        range = *read;
        return Piece::Range;
    }
    ICLogger* const logger = detail::RegisteredLogger();
    const bool isIpv6 = HasColon(trimmed);
    if (logger != nullptr && isIpv6)
        logger->Warn("Unsupported IPv6 range found: '%s'", LogText::OneLine(trimmed.c_str()).c_str());
    if (logger != nullptr && !isIpv6)
        logger->Error("Unexpected IP range found: '%s'", LogText::OneLine(trimmed.c_str()).c_str());
    return isIpv6 ? Piece::Ipv6 : Piece::Malformed;
}

}  // namespace

bool NetworkUtils::IpInRange(const std::string& address, const std::string& ranges) {
    const auto wanted = ReadWanted(address);
    if (!wanted) return false;
    bool hasRange = false, isInside = false;
    for (std::size_t start = 0; start <= ranges.size();) {
        const std::size_t end = std::min(ranges.find(',', start), ranges.size());
        Ipv4Range range;
        const Piece piece = ReadPiece(std::string_view(ranges).substr(start, end - start), range);
        if (piece == Piece::Malformed) return false;  // even when a range before it holds the address
        hasRange |= piece == Piece::Range;
        isInside |= range.Holds(*wanted);
        start = end + 1;
    }
    if (!hasRange) {
        if (ICLogger* const logger = detail::RegisteredLogger())
            logger->Error("No IP ranges found in string supplied to IpInRange(): '%s'",
                          LogText::OneLine(ranges.c_str()).c_str());
    }
    return isInside;
}

bool NetworkUtils::IsIpv4AddressIsHigher(const void* a, const void* b) {
    return AddressField(a) > AddressField(b);
}

bool NetworkUtils::IsIpv4InRange(const void* address, const void* low, const void* high) {
    const std::uint32_t field = AddressField(address);
    return AddressField(low) <= field && field <= AddressField(high);
}

}  // namespace quillon
