#include "platform/posix/CommandGroup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/native/ProcFile.h"
#include "platform/posix/Children.h"
#include "platform/posix/FolderEntry.h"

namespace quillon::platform {

namespace {

constexpr std::string_view kPrefix = "quillon-command-";
/// The time that the kernel gets to end what was killed: long only on a busy machine.
constexpr std::chrono::milliseconds kEndLimit{10'000};

std::atomic<bool> g_isAllowed{true};

/// Returns the line that `isIt` recognises.
template <class Predicate>
std::optional<std::string> FindLine(const std::string& text, Predicate isIt) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (isIt(std::string_view(text).substr(at, end - at))) return text.substr(at, end - at);
        at = end + 1;
    }
    return std::nullopt;
}

/// Returns where the groups of version 2 are mounted as a whole.
std::optional<std::string> MountPoint() {
    const std::string mounts = ReadProcessFile(::getpid(), "mountinfo").value_or("");
    const auto line = FindLine(
        mounts, [](std::string_view text) { return text.find(" - cgroup2 ") != std::string_view::npos; });
    if (!line) return std::nullopt;
    // Identifier, parent, device, root of the mount, place.
    constexpr int kRoot = 3;
    std::size_t at = 0;
    for (int field = 0; field < kRoot; ++field) at = line->find(' ', at) + 1;
    const std::size_t root = at;
    at = line->find(' ', at) + 1;
    if (line->substr(root, at - root) != "/ ") return std::nullopt;
    return line->substr(at, line->find(' ', at) - at);
}

/// Returns the directory of this process's own group.
std::optional<std::string> OwnGroup() {
    const auto mountPoint = MountPoint();
    const std::string groups = ReadProcessFile(::getpid(), "cgroup").value_or("");
    const auto line = FindLine(groups, [](std::string_view text) { return text.starts_with("0::/"); });
    if (!mountPoint || !line) return std::nullopt;
    constexpr std::size_t kBeforePath = 3;
    return *mountPoint + line->substr(kBeforePath);
}

/// The service manager divides the groups of the system itself, but for those that it has delegated: these
/// belong to the user, or are marked.
bool IsDelegated(const std::string& folder) {
    struct ::stat status {};
    if (::access("/run/systemd/system", F_OK) != 0) return true;
    if (::geteuid() != 0) return ::stat(folder.c_str(), &status) == 0 && status.st_uid == ::geteuid();
    char value = '0';
    return ::getxattr(folder.c_str(), "trusted.delegate", &value, sizeof value) == 1 && value == '1';
}

/// Calls `visit` with the path and the name of each group of ours in a directory. The iterators of the
/// standard library end the process when there is no memory.
template <class Visit>
void ForEachGroup(const std::string& folder, Visit visit) {
    const OpenFolder open(::opendir(folder.c_str()));
    if (open == nullptr) return;
    while (const ::dirent* const entry = ::readdir(open.get())) {
        const std::string_view name = entry->d_name;
        if (name.starts_with(kPrefix)) visit(folder + '/' + entry->d_name, name);
    }
}

/// Removes a group of ours, and those within it that the commands of a command have left.
bool Remove(const std::string& path) {
    if (::rmdir(path.c_str()) == 0 || errno == ENOENT) return true;
    ForEachGroup(path, [](const std::string& inner, std::string_view) { Remove(inner); });
    return ::rmdir(path.c_str()) == 0 || errno == ENOENT;
}

/// Removes what processes that have ended could not remove, because somebody of their commands lived on.
void RemoveLeftGroups(const std::string& folder) {
    ForEachGroup(folder, [](const std::string& path, std::string_view name) {
        const auto owner = FieldAt<pid_t>(name.substr(kPrefix.size()), 0);
        if (owner > 0 && ::kill(owner, 0) != 0 && errno == ESRCH) Remove(path);
    });
}

/// Returns the directory in which groups may be made; empty when there is none.
const std::string& Place() {
    static const std::string& place = *new std::string([] {
        const auto own = OwnGroup();
        if (!own || ::access((*own + "/cgroup.procs").c_str(), W_OK) != 0 || !IsDelegated(*own))
            return std::string();
        RemoveLeftGroups(*own);
        return *own;
    }());
    return place;
}

/// The groups that were in use when their objects went.
class LeftGroups {
public:
    void Add(std::string path) {
        const std::lock_guard lock(m_mutex);
        m_paths.push_back(std::move(path));
    }
    void TryAgain() {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_paths, &Remove);
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_paths;
};

LeftGroups& TheLeftGroups() {
    static LeftGroups& groups = *new LeftGroups;
    return groups;
}

std::string Read(int folder, const char* name) {
    char text[4096];
    const FileHandle file(::openat(folder, name, O_RDONLY | O_CLOEXEC));
    const ssize_t count = file ? ::read(file.Get(), text, sizeof text) : -1;
    return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

bool IsPopulated(int folder) {
    return Read(folder, "cgroup.events").find("populated 1") != std::string::npos;
}

std::vector<pid_t> Members(int folder) {
    const std::string list = Read(folder, "cgroup.procs");
    std::vector<pid_t> members;
    std::size_t at = 0;
    for (std::size_t end = 0; (end = list.find('\n', at)) != std::string::npos; at = end + 1)
        members.push_back(FieldAt<pid_t>(std::string_view(list).substr(at, end - at), 0));
    return members;
}

bool IsMember(int folder, pid_t process) {
    const auto members = Members(folder);
    return std::find(members.begin(), members.end(), process) != members.end();
}

/// Kills the processes of a group one by one. The kernel's own kill of a group spares a process whose first
/// thread has ended.
void KillEach(int folder) {
    for (const pid_t member : Members(folder)) {
        const Handle<ObjectTraits> handle(OpenProcessDescriptor(member));
        if (IsMember(folder, member)) SendSignal(handle.Get(), member, SIGKILL);
    }
}

}  // namespace

CommandGroup::CommandGroup(std::string path, FileHandle folder)
    : m_path(std::move(path)), m_folder(std::move(folder)) {}

CommandGroup::~CommandGroup() {
    m_folder.Reset();
    try {
        if (!Remove(m_path)) TheLeftGroups().Add(std::move(m_path));
    } catch (const std::bad_alloc&) {  // RemoveLeftGroups() of another process does it
    }
}

void CommandGroup::Allow(bool allowed) { g_isAllowed = allowed; }

std::unique_ptr<CommandGroup> CommandGroup::Make() {
    static std::atomic<unsigned> count{0};
    if (!g_isAllowed || Place().empty()) return nullptr;
    TheLeftGroups().TryAgain();
    std::string path =
        Place() + '/' + std::string(kPrefix) + std::to_string(::getpid()) + '-' + std::to_string(++count);
    constexpr mode_t kMode = 0755;
    if (::mkdir(path.c_str(), kMode) != 0) return nullptr;
    FileHandle folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder && ::faccessat(folder.Get(), "cgroup.kill", W_OK, 0) == 0)
        return std::unique_ptr<CommandGroup>(new CommandGroup(std::move(path), std::move(folder)));
    ::rmdir(path.c_str());
    return nullptr;
}

void CommandGroup::Kill(std::vector<std::uint32_t>& survivors) const {
    const FileHandle file(::openat(Descriptor(), "cgroup.kill", O_WRONLY | O_CLOEXEC));
    if (!file || ::write(file.Get(), "1", 1) != 1) return;
    const auto deadline = std::chrono::steady_clock::now() + kEndLimit;
    while (IsPopulated(Descriptor()) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        KillEach(Descriptor());
    }
    for (const pid_t member : Members(Descriptor())) survivors.push_back(static_cast<std::uint32_t>(member));
}

}  // namespace quillon::platform
