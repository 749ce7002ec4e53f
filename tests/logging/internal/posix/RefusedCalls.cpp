#include "logging/internal/posix/RefusedCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace quillon::test {

namespace {

constinit thread_local RefusedCalls t_refused;

}  // namespace

RefusedCalls& TheRefusedCalls() { return t_refused; }

bool RefusedCalls::IsRefused(Call made) {
    if (call != made || count == 0) return false;
    if (before > 0) {
        --before;
        return false;
    }
    --count;
    ++refused;
    return true;
}

}  // namespace quillon::test

using quillon::test::RefusedCalls;
using quillon::test::TheRefusedCalls;

namespace {

bool Refuse(RefusedCalls::Call call, int code) {
    if (!TheRefusedCalls().IsRefused(call)) return false;
    errno = code;
    return true;
}

}  // namespace

// The linker's option --wrap gives these names to the callers and the real functions their own.
extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_openat(int folder, const char* path, int flags, ...);
ssize_t __real_write(int file, const void* bytes, std::size_t size);
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __real_fstat(int file, struct ::stat* status);
int __real_mkdir(const char* path, mode_t mode);
int __real_fcntl(int file, int command, ...);

int __wrap_open(const char* path, int flags, mode_t mode) {
    return Refuse(RefusedCalls::Open, EMFILE) ? -1 : __real_open(path, flags, mode);
}

int __wrap_openat(int folder, const char* path, int flags, mode_t mode) {
    return Refuse(RefusedCalls::Open, EMFILE) ? -1 : __real_openat(folder, path, flags, mode);
}

ssize_t __wrap_write(int file, const void* bytes, std::size_t size) {
    if (file <= STDERR_FILENO) return __real_write(file, bytes, size);
    if (Refuse(RefusedCalls::Write, ENOSPC)) return -1;
    const bool isShort = TheRefusedCalls().IsRefused(RefusedCalls::ShortWrite);
    return __real_write(file, bytes, isShort ? (size + 1) / 2 : size);
}

int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return Refuse(RefusedCalls::Rename, EACCES) ? -1
                                                : __real_renameat2(fromFolder, from, toFolder, to, flags);
}

int __wrap_fstat(int file, struct ::stat* status) {
    return Refuse(RefusedCalls::Stat, EIO) ? -1 : __real_fstat(file, status);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return Refuse(RefusedCalls::MakeDirectory, EACCES) ? -1 : __real_mkdir(path, mode);
}

int __wrap_fcntl(int file, int command, long argument) {
    return Refuse(RefusedCalls::Control, EINVAL) ? -1 : __real_fcntl(file, command, argument);
}

}  // extern "C"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

void* operator new(std::size_t size) {
    void* const memory = TheRefusedCalls().IsRefused(RefusedCalls::Memory) ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
