#pragma once

#include <cstdint>
#include <string_view>

#include "base/PathEscapes.h"
#include "platform/FileApi.h"
#include "platform/win32/ReparsePoint.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {

/// What the system tells of one entry of a directory; times count units of 100 ns from 1601.
struct FoundEntry {
    std::wstring_view name;
    DWORD attributes = 0;
    DWORD reparseTag = 0;
    std::int64_t size = 0, modified = 0, accessed = 0, created = 0;
};

inline TimePoint TimeOfTicks(std::int64_t ticks) {
    constexpr std::int64_t kTicksFrom1601To1970 = 116'444'736'000'000'000;
    return ticks == 0 ? TimePoint() : TimePoint(TimePoint::duration(ticks - kTicksFrom1601To1970));
}

inline DirectoryEntry ToEntry(const FoundEntry& found) {
    const bool isDirectory = (found.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {base::NameToUtf8(found.name),
            isDirectory,
            IsLink(found.attributes, found.reparseTag),
            isDirectory ? 0 : static_cast<std::uint64_t>(found.size),
            TimeOfTicks(found.modified),
            TimeOfTicks(found.accessed),
            TimeOfTicks(found.created)};
}

}  // namespace quillon::platform
