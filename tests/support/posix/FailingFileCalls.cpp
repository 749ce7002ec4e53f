#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "support/posix/FailingCalls.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

FailingFileCalls& ThisThreadsFileCalls() {
    thread_local FailingFileCalls calls;
    return calls;
}

namespace {

bool Fails() {
    FailingFileCalls& calls = ThisThreadsFileCalls();
    if (++calls.seen != calls.failing) return false;
    errno = calls.error;
    return true;
}

bool FailsMeanwhile() {
    if (const auto act = std::exchange(ThisThreadsFileCalls().meanwhile, {})) act();
    return Fails();
}

/// Whether the call fails by its number, or because calls of its kind are refused.
bool Fails(RefusedCalls::Call call, int code) { return Fails() || RefuseCall(call, code); }

}  // namespace

}  // namespace quillon::test

using quillon::test::Fails;
using quillon::test::FailsMeanwhile;
using quillon::test::RefuseCall;
using quillon::test::RefusedCalls;
using quillon::test::TheRefusedCalls;
using quillon::test::ThisThreadsFileCalls;

// The linker's option --wrap gives these names to the callers and the real functions their own. The names are
// visible, because shared libraries may mean them too.
#pragma GCC visibility push(default)
extern "C" {

ssize_t __real_write(int file, const void* bytes, std::size_t count);
int __real_open(const char* path, int flags, ...);
int __real_openat(int folder, const char* path, int flags, ...);

// Without O_CREAT nobody looks at the mode.
int __wrap_open(const char* path, int flags, mode_t mode) {
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_open(path, flags, mode);
}
int __wrap___open_2(const char* path, int flags) { return __wrap_open(path, flags, 0); }
int __wrap_openat(int folder, const char* path, int flags, mode_t mode) {
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_openat(folder, path, flags, mode);
}
int __wrap___openat_2(int folder, const char* path, int flags) {
    return __wrap_openat(folder, path, flags, 0);
}

ssize_t __wrap_write(int file, const void* bytes, std::size_t count) {
    if (file <= STDERR_FILENO) return __real_write(file, bytes, count);
    if (Fails(RefusedCalls::Write, ENOSPC)) return -1;
    if (TheRefusedCalls().IsRefused(RefusedCalls::ShortWrite))
        return __real_write(file, bytes, (count + 1) / 2);
    return __real_write(file, bytes, ThisThreadsFileCalls().writesHalf && count > 1 ? count / 2 : count);
}

::dirent* __real_readdir(::DIR* folder);
::dirent* __wrap_readdir(::DIR* folder) { return Fails() ? nullptr : __real_readdir(folder); }

#define WRAP(isRefused, name, parameters, arguments) \
    int __real_##name parameters;                    \
    int __wrap_##name parameters { return (isRefused) ? -1 : __real_##name arguments; }
WRAP(Fails(), fsync, (int file), (file))
WRAP(Fails(), fdatasync, (int file), (file))
WRAP(Fails(), syncfs, (int file), (file))
WRAP(Fails(), sync_file_range, (int file, off64_t offset, off64_t count, unsigned flags),
     (file, offset, count, flags))
WRAP(Fails(), fchown, (int file, uid_t user, gid_t group), (file, user, group))
WRAP(Fails(), fchmod, (int file, mode_t mode), (file, mode))
WRAP(FailsMeanwhile(), futimens, (int file, const timespec times[2]), (file, times))
WRAP(Fails(), rename, (const char* from, const char* to), (from, to))
WRAP(Fails(), renameat, (int from, const char* name, int to, const char* newName), (from, name, to, newName))
WRAP(Fails(RefusedCalls::Rename, EACCES), renameat2,
     (int from, const char* name, int to, const char* newName, unsigned flags),
     (from, name, to, newName, flags))
WRAP(Fails(), linkat, (int from, const char* name, int to, const char* newName, int flags),
     (from, name, to, newName, flags))
WRAP(Fails(RefusedCalls::MakeDirectory, EACCES), mkdir, (const char* path, mode_t mode), (path, mode))
WRAP(Fails(), mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode))
WRAP(RefuseCall(RefusedCalls::Stat, EIO), fstat, (int file, struct ::stat* status), (file, status))
WRAP(RefuseCall(RefusedCalls::Control, EINVAL), fcntl, (int file, int command, long argument),
     (file, command, argument))

}  // extern "C"
#pragma GCC visibility pop
