// Refuses calls of the C library, loaded in front of it (LD_PRELOAD). The file REFUSE_FILE, which is made
// beforehand, holds the orders and the counts (Board.h) and stays whatever becomes of the process;
// whoever drives it may change the orders at any time. Calls are counted from the beginning of main().
// Children of the process are spared.
#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <malloc.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "torture/ArmedProcess.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

using namespace quillon::torture;

void ShowPlace() {
    void* frames[64];
    ::backtrace_symbols_fd(frames, ::backtrace(frames, 64), STDERR_FILENO);
}

void ShowEnd(int number) {
    isArmed = false;
    ShowPlace();
    ::signal(number, SIG_DFL);
    ::raise(number);
}

/// Where the module of an address begins.
std::uintptr_t BaseOf(void* address) {
    dl_find_object module{};
    return ::_dl_find_object(address, &module) == 0 ? reinterpret_cast<std::uintptr_t>(module.dlfo_map_start)
                                                    : 0;
}

[[gnu::noinline]] std::uint64_t Place() {
    void* frames[96];
    return PlaceOf(frames, ::backtrace(frames, 96), &BaseOf);
}

void ShowRefused() {
    isArmed = false;
    for (const int number : {SIGABRT, SIGSEGV}) ::signal(number, &ShowEnd);
    ShowPlace();
    isArmed = true;
}

/// Set while the thread looks up a name or an account. Such a call is refused as a whole: without memory in
/// the middle of it glibc 2.36 ends the process, or uses what it has not made.
[[gnu::tls_model("initial-exec")]] thread_local bool looksUp = false;

/// Counts a call and says whether it fails; errno is then set.
bool Refuse(Kind kind, int error) {
    if (looksUp) return false;
    const Answer answer = CountArmed(kind, &Place);
    if (answer == Answer::Pass) return false;
    if (answer == Answer::RefuseAndShow) ShowRefused();
    errno = error;
    return true;
}

/// A child in a control group of its own is started by the kernel's own call, which is nobody's to refuse:
/// while starts are refused there are no such groups.
bool IsGroup(const char* path) {
    return board->call != 0 && board->kind == Spawn && std::strstr(path, "cgroup") != nullptr;
}

void Begin() {
    if (const char* const file = std::getenv("REFUSE_FILE")) {
        const int opened = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, O_RDWR | O_CLOEXEC, 0));
        void* const mapped = ::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, opened, 0);
        ::syscall(SYS_close, opened);
        if (mapped != MAP_FAILED) board = static_cast<Board*>(mapped);
    }
    ::unsetenv("REFUSE_FILE");
    ::unsetenv("LD_PRELOAD");
    void* frame;
    ::backtrace(&frame, 1);  // loads what it needs
    isArmed = true;
}

using Main = int (*)(int, char**, char**);
Main theMain = nullptr;

int ArmedMain(int argc, char** argv, char** environment) {
    Begin();
    return theMain(argc, argv, ::environ != nullptr ? ::environ : environment);
}

/// Finds the C library's own function; no memory is asked for.
template <class Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

void CountBytes(std::size_t taken, std::size_t freed) {
    const auto more = static_cast<std::int64_t>(taken) - static_cast<std::int64_t>(freed);
    board->liveBytes.fetch_add(more, std::memory_order_relaxed);
}

void* Live(void* memory) {
    if (memory == nullptr) return nullptr;
    board->live.fetch_add(1, std::memory_order_relaxed);
    CountBytes(::malloc_usable_size(memory), 0);
    return memory;
}

bool Creates(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

mode_t ModeOf(int flags, std::va_list arguments) {
    return Creates(flags) ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

int OpenAt(int folder, const char* path, int flags, mode_t mode) {
    if (Refuse(Open, EMFILE)) return -1;
    return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

}  // namespace

#define NEXT(name) static const auto next = Next<decltype(&::name)>(#name)

extern "C" {

int __libc_start_main(Main main, int argc, char** argv, Main init, void (*fini)(), void (*rtldFini)(),
                      void* end) {
    theMain = main;
    using Start = int (*)(Main, int, char**, Main, void (*)(), void (*)(), void*);
    return Next<Start>("__libc_start_main")(&ArmedMain, argc, argv, init, fini, rtldFini, end);
}

// --- Memory ---

void* malloc(std::size_t size) { return Refuse(Memory, ENOMEM) ? nullptr : Live(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) {
    return Refuse(Memory, ENOMEM) ? nullptr : Live(__libc_calloc(count, size));
}
void* realloc(void* memory, std::size_t size) {
    if (Refuse(Memory, ENOMEM)) return nullptr;
    if (memory == nullptr) return Live(__libc_realloc(memory, size));
    const std::size_t before = ::malloc_usable_size(memory);
    void* const moved = __libc_realloc(memory, size);
    if (moved != nullptr) CountBytes(::malloc_usable_size(moved), before);
    return moved;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Refuse(Memory, ENOMEM) ? nullptr : Live(__libc_memalign(alignment, size));
}
void* memalign(std::size_t alignment, std::size_t size) { return aligned_alloc(alignment, size); }
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    void* const made = aligned_alloc(alignment, size);
    if (made != nullptr) *memory = made;
    return made == nullptr ? ENOMEM : 0;
}
void free(void* memory) {
    if (memory != nullptr) {
        board->live.fetch_sub(1, std::memory_order_relaxed);
        CountBytes(0, ::malloc_usable_size(memory));
    }
    __libc_free(memory);
}

// --- Files ---

#define OPEN(name)                                    \
    int name(const char* path, int flags, ...) {      \
        std::va_list arguments;                       \
        va_start(arguments, flags);                   \
        const mode_t mode = ModeOf(flags, arguments); \
        va_end(arguments);                            \
        return OpenAt(AT_FDCWD, path, flags, mode);   \
    }
#define OPEN_AT(name)                                        \
    int name(int folder, const char* path, int flags, ...) { \
        std::va_list arguments;                              \
        va_start(arguments, flags);                          \
        const mode_t mode = ModeOf(flags, arguments);        \
        va_end(arguments);                                   \
        return OpenAt(folder, path, flags, mode);            \
    }
OPEN(open)
OPEN(open64)
OPEN_AT(openat)
OPEN_AT(openat64)
int __open_2(const char* path, int flags) { return OpenAt(AT_FDCWD, path, flags, 0); }
int __open64_2(const char* path, int flags) { return OpenAt(AT_FDCWD, path, flags, 0); }
int __openat_2(int folder, const char* path, int flags) { return OpenAt(folder, path, flags, 0); }
int __openat64_2(int folder, const char* path, int flags) { return OpenAt(folder, path, flags, 0); }

#define FORWARD(kind, error, failed, type, name, parameters, arguments) \
    type name parameters {                                              \
        NEXT(name);                                                     \
        return Refuse(kind, error) ? failed : next arguments;           \
    }
FORWARD(Open, EMFILE, nullptr, std::FILE*, fopen, (const char* path, const char* mode), (path, mode))
FORWARD(Open, EMFILE, nullptr, std::FILE*, fopen64, (const char* path, const char* mode), (path, mode))
FORWARD(Open, EMFILE, nullptr, DIR*, opendir, (const char* path), (path))
FORWARD(Open, ENOMEM, nullptr, DIR*, fdopendir, (int folder), (folder))
FORWARD(Open, EMFILE, -1, int, eventfd, (unsigned count, int flags), (count, flags))
FORWARD(Open, EMFILE, -1, int, pipe, (int ends[2]), (ends))
FORWARD(Open, EMFILE, -1, int, pipe2, (int ends[2], int flags), (ends, flags))
FORWARD(Read, EIO, -1, ssize_t, read, (int file, void* to, std::size_t size), (file, to, size))
FORWARD(Read, EIO, -1, ssize_t, pread, (int file, void* to, std::size_t size, off_t at), (file, to, size, at))
FORWARD(Read, EIO, -1, ssize_t, pread64, (int file, void* to, std::size_t size, off64_t at),
        (file, to, size, at))
FORWARD(Read, EIO, 0, std::size_t, fread, (void* to, std::size_t size, std::size_t count, std::FILE* file),
        (to, size, count, file))
FORWARD(Write, ENOSPC, -1, ssize_t, write, (int file, const void* from, std::size_t size), (file, from, size))
FORWARD(Write, ENOSPC, -1, ssize_t, pwrite, (int file, const void* from, std::size_t size, off_t at),
        (file, from, size, at))
FORWARD(Write, ENOSPC, -1, ssize_t, pwrite64, (int file, const void* from, std::size_t size, off64_t at),
        (file, from, size, at))
FORWARD(Write, ENOSPC, -1, ssize_t, writev, (int file, const iovec* parts, int count), (file, parts, count))
FORWARD(Write, ENOSPC, -1, ssize_t, copy_file_range,
        (int from, off64_t* fromAt, int to, off64_t* toAt, std::size_t size, unsigned flags),
        (from, fromAt, to, toAt, size, flags))
FORWARD(Write, ENOSPC, -1, int, ftruncate, (int file, off_t size), (file, size))
FORWARD(Write, ENOSPC, -1, int, ftruncate64, (int file, off64_t size), (file, size))
FORWARD(Rename, EACCES, -1, int, rename, (const char* from, const char* to), (from, to))
FORWARD(Rename, EACCES, -1, int, renameat, (int from, const char* name, int to, const char* newName),
        (from, name, to, newName))
FORWARD(Rename, EACCES, -1, int, renameat2,
        (int from, const char* name, int to, const char* newName, unsigned flags),
        (from, name, to, newName, flags))
FORWARD(Rename, EACCES, -1, int, linkat, (int from, const char* name, int to, const char* newName, int flags),
        (from, name, to, newName, flags))
FORWARD(Rename, EACCES, -1, int, unlink, (const char* path), (path))
FORWARD(Rename, EACCES, -1, int, unlinkat, (int folder, const char* name, int flags), (folder, name, flags))
FORWARD(Sync, EIO, -1, int, fsync, (int file), (file))
FORWARD(Sync, EIO, -1, int, fdatasync, (int file), (file))
FORWARD(Sync, EIO, -1, int, syncfs, (int file), (file))
int mkdir(const char* path, mode_t mode) {
    NEXT(mkdir);
    return Refuse(Folder, EACCES) || IsGroup(path) ? -1 : next(path, mode);
}
FORWARD(Folder, EACCES, -1, int, mkdirat, (int folder, const char* name, mode_t mode), (folder, name, mode))

// --- Processes, threads, sockets ---

FORWARD(Spawn, EAGAIN, -1, pid_t, fork, (), ())
FORWARD(Spawn, EAGAIN, EAGAIN, int, posix_spawn,
        (pid_t * id, const char* path, const posix_spawn_file_actions_t* actions,
         const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment),
        (id, path, actions, attributes, arguments, environment))
using ChildMain = int (*)(void*);
int __clone(ChildMain run, void* stack, int flags, void* argument, ...) {
    using Clone = int (*)(ChildMain, void*, int, void*, ...);
    static const auto next = Next<Clone>("__clone");
    std::va_list arguments;
    va_start(arguments, argument);
    void* const id = va_arg(arguments, void*);
    va_end(arguments);
    return Refuse(Spawn, EAGAIN) ? -1 : next(run, stack, flags, argument, id);
}
FORWARD(Thread, EAGAIN, EAGAIN, int, pthread_create,
        (pthread_t * id, const pthread_attr_t* attributes, void* (*run)(void*), void* argument),
        (id, attributes, run, argument))
FORWARD(Socket, EMFILE, -1, int, socket, (int domain, int type, int protocol), (domain, type, protocol))
FORWARD(Socket, EMFILE, -1, int, socketpair, (int domain, int type, int protocol, int ends[2]),
        (domain, type, protocol, ends))
FORWARD(Socket, EADDRINUSE, -1, int, bind, (int file, const sockaddr* address, socklen_t size),
        (file, address, size))
FORWARD(Socket, EADDRINUSE, -1, int, listen, (int file, int waiting), (file, waiting))
FORWARD(Socket, ECONNREFUSED, -1, int, connect, (int file, const sockaddr* address, socklen_t size),
        (file, address, size))
FORWARD(Socket, EMFILE, -1, int, accept, (int file, sockaddr* address, socklen_t* size),
        (file, address, size))
FORWARD(Socket, EMFILE, -1, int, accept4, (int file, sockaddr* address, socklen_t* size, int flags),
        (file, address, size, flags))
FORWARD(Socket, ENOBUFS, -1, ssize_t, send, (int file, const void* from, std::size_t size, int flags),
        (file, from, size, flags))
FORWARD(Socket, ENOBUFS, -1, ssize_t, recv, (int file, void* to, std::size_t size, int flags),
        (file, to, size, flags))

FORWARD(Socket, ENOMEM, -1, int, poll, (pollfd * waited, nfds_t count, int limit), (waited, count, limit))
FORWARD(Socket, ENOBUFS, -1, ssize_t, sendto,
        (int file, const void* from, std::size_t size, int flags, const sockaddr* to, socklen_t toSize),
        (file, from, size, flags, to, toSize))
FORWARD(Socket, EMFILE, -1, int, getifaddrs, (ifaddrs * *list), (list))

// --- Look-ups, as a whole ---

int RefuseLookup() {
    if (Refuse(LookupLater, 0)) return EAI_AGAIN;
    if (Refuse(LookupMemory, ENOMEM)) return EAI_MEMORY;
    return Refuse(LookupSystem, EMFILE) ? EAI_SYSTEM : 0;
}

#define LOOK_UP(refuse, name, parameters, arguments) \
    int name parameters {                            \
        NEXT(name);                                  \
        if (const int code = refuse) return code;    \
        looksUp = true;                              \
        const int result = next arguments;           \
        looksUp = false;                             \
        return result;                               \
    }
LOOK_UP(RefuseLookup(), getaddrinfo,
        (const char* node, const char* service, const addrinfo* hints, addrinfo** list),
        (node, service, hints, list))
LOOK_UP(RefuseLookup(), getnameinfo,
        (const sockaddr* address, socklen_t size, char* host, socklen_t hostSize, char* service,
         socklen_t serviceSize, int flags),
        (address, size, host, hostSize, service, serviceSize, flags))
LOOK_UP(Refuse(Memory, ENOMEM) ? ENOMEM : 0, getpwuid_r,
        (uid_t user, passwd* entry, char* texts, std::size_t size, passwd** found),
        (user, entry, texts, size, found))

// --- The clock of the day; the other one cannot fail ---

int clock_gettime(clockid_t clock, timespec* now) {
    NEXT(clock_gettime);
    if (clock != CLOCK_REALTIME) return next(clock, now);
    *now = {};
    if (Refuse(Clock, EINVAL)) return -1;
    const int code = next(clock, now);
    now->tv_sec += board->ahead;
    return code;
}

time_t time(time_t* copy) {
    NEXT(time);
    const time_t now = next(nullptr) + board->ahead;
    if (copy != nullptr) *copy = now;
    return now;
}

int gettimeofday(timeval* now, void* zone) {
    NEXT(gettimeofday);
    const int code = next(now, zone);
    now->tv_sec += board->ahead;
    return code;
}

}  // extern "C"
