#include "platform/posix/FolderEntry.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace quillon::platform {

namespace {

TimePoint ToTimePoint(const struct ::statx_timestamp& time) {
    using Ticks = TimePoint::duration;
    const auto part = std::chrono::duration_cast<Ticks>(std::chrono::nanoseconds(time.tv_nsec));
    return TimePoint(std::chrono::duration_cast<Ticks>(std::chrono::seconds(time.tv_sec)) + part);
}

}  // namespace

void AddFacts(int folder, const char* name, DirectoryEntry& entry) {
    constexpr unsigned kWanted = STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_ATIME | STATX_BTIME;
    struct ::statx facts {};
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW, kWanted, &facts) != 0) return;
    if (S_ISREG(facts.stx_mode)) entry.size = facts.stx_size;
    entry.modified = ToTimePoint(facts.stx_mtime);
    entry.accessed = ToTimePoint(facts.stx_atime);
    if ((facts.stx_mask & STATX_BTIME) != 0) entry.created = ToTimePoint(facts.stx_btime);
}

}  // namespace quillon::platform
