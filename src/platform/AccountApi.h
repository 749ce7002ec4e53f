#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// A security identifier in the system's binary layout: revision, count, authority
/// (6 bytes, big-endian), and 4 bytes little-endian for each sub-authority.
using Sid = std::vector<unsigned char>;

/// Room for an account's or a domain's name, terminator included.
constexpr std::size_t kAccountNameSize = 256;

/// Reads the text "S-1-..."; nothing when it is not an identifier.
std::optional<Sid> ParseSid(const std::wstring& text);
/// Whether this machine knows the identifier as a user account. Each buffer has
/// kAccountNameSize bytes; a longer name is a failure, so false.
///
/// Outside Windows only "S-1-22-1-UID" (users by their number) names a user, and
/// only while the system's account database knows UID: nothing else is mapped.
bool IsUserAccount(const Sid& sid, char* domain, char* account);

struct LuidParts {
    std::uint32_t low = 0;
    std::int32_t high = 0;

    bool operator==(const LuidParts&) const = default;
};
/// The fields of the system's type.
LuidParts PartsOf(const LUID& luid);

}  // namespace quillon::platform
