#include "platform/FolderWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"
#include "platform/posix/FolderEntry.h"

namespace quillon::platform {

namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

struct Identity {
    ::dev_t device = 0;
    ::ino_t node = 0;
    bool operator==(const Identity&) const = default;
};

std::optional<Identity> IdentityOf(const FileHandle& folder) {
    struct ::stat status {};
    if (::fstat(folder.Get(), &status) == 0) return Identity{status.st_dev, status.st_ino};
    FailWithErrno();
    return std::nullopt;
}

/// The mount that a directory lies in. It has a number of its own even where it shows a part of the same
/// device once more; kernels that tell no number tell the device.
struct Mount {
    std::uint64_t number = 0;
    std::uint32_t major = 0, minor = 0;
    bool operator==(const Mount&) const = default;
};

std::optional<Mount> MountOf(const FileHandle& folder) {
    struct ::statx facts {};
    if (::statx(folder.Get(), "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_MNT_ID, &facts) == 0)
        return Mount{facts.stx_mnt_id, facts.stx_dev_major, facts.stx_dev_minor};
    FailWithErrno();
    return std::nullopt;
}

bool IsDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

/// Keeps few directories open, as a process has few descriptors: a walk that erases the current one, any
/// other the last ones on the way as well. Where a directory is not open, the way up is "..", which is taken
/// only when it leads to the very directory that the walk came from.
struct FolderWalk::State {
    struct Above {
        FileHandle folder;
        std::optional<Identity> identity;  ///< when it is not open
    };

    /// Not when it could not be told again.
    static void Close(Above& level) {
        level.identity = IdentityOf(level.folder);
        if (level.identity) level.folder.Reset();
    }

    FileHandle folder;
    std::optional<Mount> mount;  ///< that is not left; none for a walk that only lists
    std::vector<Above> above;
};

void FolderWalk::Drop::operator()(State* state) const noexcept { delete state; }

std::optional<FolderWalk> FolderWalk::Open(const std::string& folder, Purpose purpose) {
    const int flags = purpose == Purpose::ToErase ? kOpenFolder | O_NOFOLLOW : kOpenFolder;
    const auto native = NativeName(folder);
    FileHandle handle(native ? ::open(native->c_str(), flags) : -1);
    if (!handle) {
        FailWithErrno();
        return std::nullopt;
    }
    OwnState state(new State{std::move(handle), {}, {}});
    if (purpose == Purpose::ToErase && !(state->mount = MountOf(state->folder))) return std::nullopt;
    return FolderWalk(std::move(state));
}

bool FolderWalk::List(const std::function<void(DirectoryEntry&&)>& visit, Detail detail) {
    FileHandle copy(::fcntl(m_state->folder.Get(), F_DUPFD_CLOEXEC, 0));
    if (!copy) return FailWithErrno();
    const OpenFolder folder(::fdopendir(copy.Get()));
    if (!folder) return FailWithErrno();
    const int descriptor = copy.Release();  // now the stream's
    ::rewinddir(folder.get());
    errno = 0;
    while (const ::dirent* const found = ::readdir(folder.get())) {
        if (!IsDotOrDotDot(found->d_name)) {
            DirectoryEntry entry = ToEntry(descriptor, *found);
            if (detail == Detail::Facts) AddFacts(descriptor, found->d_name, entry);
            visit(std::move(entry));
        }
        errno = 0;
    }
    return errno == 0 || FailWithErrno();
}

std::optional<std::uint64_t> FolderWalk::SizeOf(const std::string& name) const {
    const auto native = NativeElement(name);
    if (native) return SizeOfFileAt(m_state->folder.Get(), native->c_str());
    FailWithErrno();
    return std::nullopt;
}

bool FolderWalk::RemoveFile(const std::string& name) {
    const auto native = NativeElement(name);
    return native ? RemoveFileAt(m_state->folder.Get(), native->c_str()) : FailWithErrno();
}

bool FolderWalk::RemoveEmptyDirectory(const std::string& name) {
    const auto native = NativeElement(name);
    return native ? RemoveEmptyDirectoryAt(m_state->folder.Get(), native->c_str()) : FailWithErrno();
}

bool FolderWalk::Enter(const std::string& name) {
    const auto native = NativeElement(name);
    FileHandle below(native ? ::openat(m_state->folder.Get(), native->c_str(), kOpenFolder | O_NOFOLLOW)
                            : -1);
    if (!below) return FailWithErrno();
    if (m_state->mount && MountOf(below) != m_state->mount) {
        errno = EXDEV;
        return FailWithErrno();
    }
    constexpr std::size_t kMostOpen = 8;
    auto& above = m_state->above;
    above.push_back({std::exchange(m_state->folder, std::move(below)), {}});
    const std::size_t open = m_state->mount ? 0 : kMostOpen;
    if (above.size() > open) State::Close(above[above.size() - 1 - open]);
    return true;
}

bool FolderWalk::Leave() {
    if (m_state->above.empty()) {
        errno = ENOTDIR;
        return FailWithErrno();
    }
    State::Above& last = m_state->above.back();
    if (!last.folder) {
        last.folder.Reset(::openat(m_state->folder.Get(), "..", kOpenFolder));
        if (!last.folder) return FailWithErrno();
        if (IdentityOf(last.folder) != last.identity) {
            last.folder.Reset();
            errno = ENOTDIR;  // the folder was moved away meanwhile
            return FailWithErrno();
        }
    }
    m_state->folder = std::move(last.folder);
    m_state->above.pop_back();
    return true;
}

}  // namespace quillon::platform
