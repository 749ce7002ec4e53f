#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

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

/// Whether the call fails by its number, or because calls of its kind are refused.
bool Fails(RefusedCalls::Call call, int code) { return Fails() || RefuseCall(call, code); }

bool MakesFile(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

}  // namespace

}  // namespace quillon::test

using quillon::test::Fails;
using quillon::test::MakesFile;
using quillon::test::RefuseCall;
using quillon::test::RefusedCalls;
using quillon::test::TheRefusedCalls;
using quillon::test::ThisThreadsFileCalls;

// The linker's option --wrap gives these names to the callers and the real functions their own. The names are
// visible, because shared libraries may mean them too.
#pragma GCC visibility push(default)
extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_openat(int folder, const char* path, int flags, ...);
ssize_t __real_write(int file, const void* bytes, std::size_t count);
int __real_fsync(int file);
int __real_rename(const char* from, const char* to);
int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __real_mkdir(const char* path, mode_t mode);
int __real_mkdirat(int folder, const char* path, mode_t mode);
int __real_fdatasync(int file);
int __real_syncfs(int file);
int __real_sync_file_range(int file, off64_t offset, off64_t count, unsigned flags);
int __real_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags);
int __real_fstat(int file, struct ::stat* status);
int __real_fcntl(int file, int command, ...);
int __real_fchown(int file, uid_t user, gid_t group);
int __real_fchmod(int file, mode_t mode);
int __real_futimens(int file, const timespec times[2]);

int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    std::va_list arguments;
    va_start(arguments, flags);
    if (MakesFile(flags)) mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_open(path, flags, mode);
}

int __wrap___open_2(const char* path, int flags) {
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_open(path, flags, 0);
}

int __wrap_openat(int folder, const char* path, int flags, ...) {
    mode_t mode = 0;
    std::va_list arguments;
    va_start(arguments, flags);
    if (MakesFile(flags)) mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_openat(folder, path, flags, mode);
}

int __wrap___openat_2(int folder, const char* path, int flags) {
    return Fails(RefusedCalls::Open, EMFILE) ? -1 : __real_openat(folder, path, flags, 0);
}

ssize_t __wrap_write(int file, const void* bytes, std::size_t count) {
    if (file <= STDERR_FILENO) return __real_write(file, bytes, count);
    if (Fails(RefusedCalls::Write, ENOSPC)) return -1;
    if (TheRefusedCalls().IsRefused(RefusedCalls::ShortWrite))
        return __real_write(file, bytes, (count + 1) / 2);
    return __real_write(file, bytes, ThisThreadsFileCalls().writesHalf && count > 1 ? count / 2 : count);
}

int __wrap_fsync(int file) { return Fails() ? -1 : __real_fsync(file); }

int __wrap_rename(const char* from, const char* to) { return Fails() ? -1 : __real_rename(from, to); }

int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return Fails() ? -1 : __real_renameat(fromFolder, from, toFolder, to);
}

int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return Fails(RefusedCalls::Rename, EACCES) ? -1 : __real_renameat2(fromFolder, from, toFolder, to, flags);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return Fails(RefusedCalls::MakeDirectory, EACCES) ? -1 : __real_mkdir(path, mode);
}

int __wrap_mkdirat(int folder, const char* path, mode_t mode) {
    return Fails() ? -1 : __real_mkdirat(folder, path, mode);
}

int __wrap_fstat(int file, struct ::stat* status) {
    return RefuseCall(RefusedCalls::Stat, EIO) ? -1 : __real_fstat(file, status);
}

int __wrap_fcntl(int file, int command, long argument) {
    return RefuseCall(RefusedCalls::Control, EINVAL) ? -1 : __real_fcntl(file, command, argument);
}

int __wrap_fchown(int file, uid_t user, gid_t group) {
    return Fails() ? -1 : __real_fchown(file, user, group);
}

int __wrap_fchmod(int file, mode_t mode) { return Fails() ? -1 : __real_fchmod(file, mode); }

int __wrap_futimens(int file, const timespec times[2]) { return Fails() ? -1 : __real_futimens(file, times); }

int __wrap_fdatasync(int file) { return Fails() ? -1 : __real_fdatasync(file); }

int __wrap_syncfs(int file) { return Fails() ? -1 : __real_syncfs(file); }

int __wrap_sync_file_range(int file, off64_t offset, off64_t count, unsigned flags) {
    return Fails() ? -1 : __real_sync_file_range(file, offset, count, flags);
}

int __wrap_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return Fails() ? -1 : __real_linkat(fromFolder, from, toFolder, to, flags);
}

}  // extern "C"
#pragma GCC visibility pop
