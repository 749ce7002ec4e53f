#include "system/DatabaseLocks.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <string>

#include "system/posix/FileIdentity.h"

namespace quillon::agent {

namespace {

/// Returns another handle of an open file, clear of the standard streams; -1 when there is none left. It is
/// one for writing where the file may be written, as a lock for writing needs that and whoever has the file
/// open first may only read.
int AnotherHandle(int file) {
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    const int opened = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (opened > STDERR_FILENO) return opened;
    const int copied = ::fcntl(opened < 0 ? file : opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (opened >= 0) ::close(opened);
    return copied;
}

/// The locks of this process on the files of SQLite. Those of one file are held by one handle, whichever of
/// its own SQLite names, as it counts them for the whole process.
class HandleLocks {
public:
    /// As fcntl(), by a lock of the handle in the place of one of the process.
    int Control(int file, int command, struct flock& lock) {
        const std::lock_guard guard(m_mutex);
        const int holder = HolderOf(file);
        if (holder < 0) return -1;
        lock.l_pid = 0;  // the kernel insists on it
        return ::fcntl(holder, command, &lock);
    }

    int Close(int file) {
        const std::lock_guard guard(m_mutex);
        const auto found = std::find_if(m_holders.begin(), m_holders.end(), [file](const auto& item) {
            return item.second.users.contains(file);
        });
        if (found != m_holders.end()) Forget(found, file);
        return ::close(file);
    }

private:
    struct Holder {
        int handle = -1;
        std::set<int> users;  ///< handles of SQLite
    };
    using Holders = std::map<FileIdentity, Holder>;

    int HolderOf(int file) {
        const auto identity = IdentityOf(file);
        if (!identity) return -1;
        Holder& holder = m_holders[*identity];
        holder.users.insert(file);
        if (holder.handle < 0) holder.handle = AnotherHandle(file);
        return holder.handle;
    }

    void Forget(Holders::iterator holder, int file) {
        holder->second.users.erase(file);
        if (!holder->second.users.empty()) return;
        if (holder->second.handle >= 0) ::close(holder->second.handle);
        m_holders.erase(holder);
    }

    std::mutex m_mutex;
    Holders m_holders;
};

HandleLocks& TheHandleLocks() {
    static HandleLocks& locks = *new HandleLocks;  // a database may be closed while the process ends
    return locks;
}

int HandleCommandOf(int command) {
    if (command == F_SETLK) return F_OFD_SETLK;
    return command == F_GETLK ? F_OFD_GETLK : -1;
}

extern "C" int ControlForSqlite(int file, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const int ofHandle = HandleCommandOf(command);
    if (ofHandle < 0) return ::fcntl(file, command, argument);
    try {
        return TheHandleLocks().Control(file, ofHandle, *static_cast<struct flock*>(argument));
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return -1;
    }
}

extern "C" int CloseForSqlite(int file) { return TheHandleLocks().Close(file); }

template <class Function>
void Replace(sqlite3_vfs& system, const char* name, Function* function) {
    system.xSetSystemCall(&system, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
}

bool ReplaceCalls() {
    sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    if (system == nullptr) return false;
    TheHandleLocks();  // closing takes no memory
    Replace(*system, "fcntl", &ControlForSqlite);
    Replace(*system, "close", &CloseForSqlite);
    return true;
}

}  // namespace

void KeepDatabaseLocks() { [[maybe_unused]] static const bool areReplaced = ReplaceCalls(); }

}  // namespace quillon::agent
