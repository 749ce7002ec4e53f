#include "platform/NewFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "platform/ErrorText.h"
#include "platform/native/NativePath.h"
#include "platform/posix/AccessList.h"
#include "platform/posix/Errno.h"
#include "platform/posix/FileModes.h"

namespace quillon::platform {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t kAsTheProcessLets = 0666;
constexpr mode_t kPermissions = 0777;

/// Repeats a call while a signal interrupts it.
template <class Call>
auto Retried(const Call& call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

/// One that may be written to, but not read, serves as well; it cannot be brought to the disk.
FileHandle OpenDirectory(const std::string& native) {
    constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
    FileHandle directory(Retried([&] { return ::open(native.c_str(), O_RDONLY | kFlags); }));
    if (!directory && errno == EACCES) directory.Reset(::open(native.c_str(), O_PATH | kFlags));
    return directory;
}

/// EBADF: it is open by its path only. EINVAL: its file system has nothing to bring to the disk.
bool SyncDirectory(const FileHandle& directory) {
    return Retried([&] { return ::fsync(directory.Get()); }) == 0 || errno == EBADF || errno == EINVAL;
}

/// Not when somebody takes it for a leftover before it is locked. Some file systems know no locks.
bool IsOurs(const FileHandle& file) {
    struct ::stat status {};
    const bool isFree = ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    return isFree && ::fstat(file.Get(), &status) == 0 && status.st_nlink > 0;
}

}  // namespace

struct NewFile::State {
    /// EISDIR: the path ends in no name of a file.
    bool Split(const std::string& native);
    bool CheckOld();
    bool Make(mode_t mode);
    bool GiveNameOnce();

    FileHandle directory, file;
    std::string name, temporary;
    FileHandle oldFile;  ///< the file that has the name when this one is made, without access
    struct ::stat old {};
    IfThere ifThere = IfThere::Replace;
    bool isThere = false;  ///< under its temporary name
};

bool NewFile::State::Split(const std::string& native) {
    const std::size_t begin = native.rfind('/') + 1;  // 0 when there is none
    name = native.substr(begin);
    if (name.empty() || name == "." || name == "..") {
        errno = native.empty() ? ENOENT : EISDIR;
        return false;
    }
    directory = OpenDirectory(begin == 0 ? "." : native.substr(0, begin));
    return static_cast<bool>(directory);
}

bool NewFile::State::CheckOld() {
    FileHandle found(::openat(directory.Get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!found) return errno == ENOENT;
    if (::fstat(found.Get(), &old) != 0) return false;
    errno = ifThere == IfThere::Fail ? EEXIST : EACCES;
    if (ifThere == IfThere::Fail || IsReadOnly(old)) return false;
    if (S_ISREG(old.st_mode)) oldFile = std::move(found);
    return oldFile || S_ISLNK(old.st_mode);
}

bool NewFile::State::Make(mode_t mode) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    constexpr int kMostNames = 100;
    for (int i = 0; i < kMostNames; ++i) {
        temporary = NewFileName();
        file.Reset(Retried([&] { return ::openat(directory.Get(), temporary.c_str(), kFlags, mode); }));
        if (!file && errno != EEXIST) return false;
        if (file && IsOurs(file)) return isThere = true;
    }
    return false;
}

/// Where the file system cannot rename without replacing, a second name is given, which never replaces.
bool NewFile::State::GiveNameOnce() {
    const int folder = directory.Get();
    if (::renameat2(folder, temporary.c_str(), folder, name.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (::linkat(folder, temporary.c_str(), folder, name.c_str(), 0) != 0) return false;
    ::unlinkat(folder, temporary.c_str(), 0);
    return true;
}

void NewFile::Drop::operator()(State* state) const noexcept {
    const std::uint32_t code = LastError();
    if (state->isThere) ::unlinkat(state->directory.Get(), state->temporary.c_str(), 0);
    delete state;
    SetLastErrorCode(code);
}

std::optional<NewFile> NewFile::Create(const std::string& path, IfThere ifThere, Access access) {
    OwnState state(new State);
    state->ifThere = ifThere;
    const auto native = NativePath(path);
    if (native && state->Split(*native) && state->CheckOld()) {
        const bool isPrivate = access != Access::AsTheProcessLets || state->oldFile;
        if (state->Make(isPrivate ? kOwnerOnly : kAsTheProcessLets)) return NewFile(std::move(state));
    }
    FailWithErrno();
    return std::nullopt;
}

const FileHandle& NewFile::Handle() const { return m_state->file; }

bool NewFile::TakeSecurity() {
    if (!m_state->oldFile) return true;
    const int file = m_state->file.Get();
    const struct ::stat& old = m_state->old;
    constexpr auto kSame = static_cast<::uid_t>(-1);
    bool isGroupKept = ::fchown(file, old.st_uid, old.st_gid) == 0;
    if (!isGroupKept) isGroupKept = ::fchown(file, kSame, old.st_gid) == 0;
    return CopyAccess(m_state->oldFile.Get(), file, old.st_mode & kPermissions, isGroupKept) ||
           FailWithErrno();
}

bool NewFile::Commit() {
    State& state = *m_state;
    if (Retried([&] { return ::fsync(state.file.Get()); }) != 0) return FailWithErrno();
    const int folder = state.directory.Get();
    const bool isNamed = state.ifThere == IfThere::Replace
                             ? ::renameat(folder, state.temporary.c_str(), folder, state.name.c_str()) == 0
                             : state.GiveNameOnce();
    if (!isNamed) return FailWithErrno();
    state.isThere = false;
    return SyncDirectory(state.directory) || FailWithErrno();
}

}  // namespace quillon::platform
