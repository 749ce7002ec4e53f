#include "platform/FolderWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

bool IsDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

/// Keeps only the current directory open, as a process has few descriptors. The way up is "..", which is
/// taken only when it leads to the very directory that the walk came from.
struct FolderWalk::State {
    FileHandle folder;
    std::vector<Identity> above;
};

FolderWalk::FolderWalk(std::unique_ptr<State> state) : m_state(std::move(state)) {}
FolderWalk::FolderWalk(FolderWalk&&) noexcept = default;
FolderWalk& FolderWalk::operator=(FolderWalk&&) noexcept = default;
FolderWalk::~FolderWalk() = default;

std::optional<FolderWalk> FolderWalk::Open(const std::string& folder, Purpose purpose) {
    const int flags = purpose == Purpose::ToErase ? kOpenFolder | O_NOFOLLOW : kOpenFolder;
    FileHandle handle(::open(NativeName(folder).c_str(), flags));
    if (handle) return FolderWalk(std::make_unique<State>(State{std::move(handle), {}}));
    FailWithErrno();
    return std::nullopt;
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
    return SizeOfFileAt(m_state->folder.Get(), name.c_str());
}

bool FolderWalk::RemoveFile(const std::string& name) {
    return RemoveFileAt(m_state->folder.Get(), name.c_str());
}

bool FolderWalk::RemoveEmptyDirectory(const std::string& name) {
    return RemoveEmptyDirectoryAt(m_state->folder.Get(), name.c_str());
}

bool FolderWalk::Enter(const std::string& name) {
    const auto here = IdentityOf(m_state->folder);
    FileHandle below(::openat(m_state->folder.Get(), name.c_str(), kOpenFolder | O_NOFOLLOW));
    if (!below) return FailWithErrno();
    if (!here) return false;
    m_state->above.push_back(*here);
    m_state->folder = std::move(below);
    return true;
}

bool FolderWalk::Leave() {
    FileHandle above(::openat(m_state->folder.Get(), "..", kOpenFolder));
    if (!above) return FailWithErrno();
    const auto identity = IdentityOf(above);
    if (!identity) return false;
    if (m_state->above.empty() || *identity != m_state->above.back()) {
        errno = ENOTDIR;  // the folder was moved away meanwhile
        return FailWithErrno();
    }
    m_state->above.pop_back();
    m_state->folder = std::move(above);
    return true;
}

}  // namespace quillon::platform
