#include "platform/ProcessApi.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>

#include "base/ErrorCodes.h"
#include "platform/CaptureState.h"
#include "platform/ErrorText.h"
#include "platform/FileContent.h"
#include "platform/posix/ChildEnd.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Between two looks at a child that cannot be polled for.
constexpr milliseconds kLookInterval{10};

int PollTimeout(std::optional<Clock::time_point> deadline, bool canPoll) {
    if (!deadline && canPoll) return -1;
    auto timeout = canPoll ? milliseconds(std::numeric_limits<int>::max()) : kLookInterval;
    if (deadline) {
        const auto left = std::chrono::ceil<milliseconds>(*deadline - Clock::now());
        timeout = std::clamp(left, milliseconds(0), timeout);
    }
    return static_cast<int>(timeout.count());
}

long OwnPeak() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// Resets a signalled event; false when another wait was faster.
bool Consume(int event) {
    std::uint64_t count = 0;
    return ::read(event, &count, sizeof count) == sizeof count;
}

std::int32_t StatusOf(const ChildEnd& end, const std::optional<std::int32_t>& killedWith) {
    if (end.signal == 0) return end.status;
    return killedWith && (end.signal == SIGKILL || end.signal == SIGTERM) ? *killedWith : 128 + end.signal;
}

/// The children that were let go and have ended since.
void ReapLetGo(ChildTable& table) {
    for (auto* link = &table.letGo; *link != nullptr;) {
        if (link->use_count() > 1 || !HasEnded(**link)) {
            link = &(*link)->nextLetGo;
            continue;
        }
        table.children.erase((*link)->id);
        auto next = std::move((*link)->nextLetGo);
        *link = std::move(next);
    }
}

std::shared_ptr<ChildProcess::State> FindChild(pid_t process) {
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    const auto child = table.children.find(process);
    return child == table.children.end() ? nullptr : child->second.lock();
}

KillResult KillStranger(pid_t process) {
    if (!IsAlive(process)) {
        SetLastErrorCode(base::kInvalidParameter);
        return KillResult::NotOpened;
    }
    if (::kill(process, SIGKILL) == 0) return KillResult::Killed;
    FailWithErrno();
    return KillResult::NotOpened;
}

/// Asks the child, and its tree, to end, and gives them the time to do so.
void AskToEnd(const ChildProcess::State& child, const KillRequest& request) {
    if (request.scope == KillScope::Tree && !child.treeMark.empty()) {
        SignalTree(child, SIGTERM);
    } else {
        SignalChild(child, SIGTERM);
    }
    const Clock::time_point deadline = Clock::now() + request.grace;
    while (!HasEnded(child) && Clock::now() < deadline) {
        pollfd waited{child.descriptor.Get(), POLLIN, 0};
        ::poll(&waited, 1, PollTimeout(deadline, static_cast<bool>(child.descriptor)));
    }
}

KillOutcome KillChild(ChildProcess::State& child, const KillRequest& request) {
    const std::lock_guard lock(child.mutex);
    if (child.killedWith || HasEnded(child)) {
        SetLastErrorCode(base::kAccessDenied);
        return {KillResult::NotKilled, {}};
    }
    child.killedWith = request.exitStatus;
    if (request.grace > milliseconds(0)) AskToEnd(child, request);
    KillOutcome outcome{KillResult::Killed, {}};
    const bool isTree = request.scope == KillScope::Tree && !child.treeMark.empty();
    const bool isKilled = isTree ? KillTree(child, outcome.survivors)
                                 : HasEnded(child) || SendSignal(child.descriptor.Get(), child.id, SIGKILL);
    if (isKilled) return outcome;
    child.killedWith.reset();
    outcome.result = KillResult::NotKilled;
    return outcome;
}

}  // namespace

void ObjectTraits::Close(Type value) noexcept {
    const int error = errno;
    ::close(value);
    errno = error;
}

EventHandle CreateAutoResetEvent() {
    EventHandle event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!event) FailWithErrno();
    return event;
}

bool SignalEvent(const EventHandle& event) {
    const std::uint64_t one = 1;
    return ::write(event.Get(), &one, sizeof one) == sizeof one || FailWithErrno();
}

std::uint32_t AwaitEvents(const EventHandle& first, const EventHandle& second,
                          std::optional<milliseconds> limit) {
    std::optional<Clock::time_point> deadline;
    if (limit) deadline = Clock::now() + *limit;
    for (;;) {
        pollfd waited[] = {{first.Get(), POLLIN, 0}, {second.Get(), POLLIN, 0}};
        if (::poll(waited, 2, PollTimeout(deadline, true)) < 0 && errno != EINTR) {
            FailWithErrno();
            return kWaitFailed;
        }
        if (waited[0].revents != 0 && Consume(first.Get())) return kWaitProcess;
        if (waited[1].revents != 0 && Consume(second.Get())) return kWaitEvent;
        if (deadline && Clock::now() >= *deadline) return kWaitTimeout;
    }
}

ChildTable& Children() {
    static ChildTable& table = *new ChildTable;
    return table;
}

ChildProcess::State::State(std::string mark, std::unique_ptr<CommandGroup> commandGroup)
    : treeMark(std::move(mark)), group(std::move(commandGroup)), parentPeak(OwnPeak()) {}

ChildProcess::State::~State() {
    if (id == 0) return;
    ChildEnd end;
    AwaitChild(*this, true, false, end);
}

bool HasEnded(const ChildProcess::State& child) {
    ChildEnd end;
    return AwaitChild(child, false, false, end) != EAGAIN;
}

int OpenProcessDescriptor(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

bool SendSignal(int descriptor, pid_t process, int number) {
    if (descriptor < 0) return ::kill(process, number) == 0 || FailWithErrno();
    return ::syscall(SYS_pidfd_send_signal, descriptor, number, nullptr, 0) == 0 || FailWithErrno();
}

ChildProcess::~ChildProcess() {
    if (!m_state) return;
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    m_state->nextLetGo = std::move(table.letGo);
    table.letGo = std::move(m_state);
    ReapLetGo(table);
}

std::uint32_t ChildProcess::Wait(const EventHandle& event, OutputCapture* output,
                                 std::optional<milliseconds> limit) const {
    std::optional<Clock::time_point> deadline;
    if (limit) deadline = Clock::now() + *limit;
    const bool canPoll = static_cast<bool>(m_state->descriptor);
    const int reader = output == nullptr || output->HasEnded() ? -1 : output->Internals().reader.Get();
    for (;;) {
        pollfd waited[] = {
            {m_state->descriptor.Get(), POLLIN, 0}, {event.Get(), POLLIN, 0}, {reader, POLLIN, 0}};
        if (::poll(waited, 3, PollTimeout(deadline, canPoll)) < 0 && errno != EINTR) {
            FailWithErrno();
            return kWaitFailed;
        }
        if (canPoll ? waited[0].revents != 0 : HasEnded()) return kWaitProcess;
        if (waited[1].revents != 0 && Consume(event.Get())) return kWaitEvent;
        if (waited[2].revents != 0) return kWaitOutput;
        if (deadline && Clock::now() >= *deadline) return kWaitTimeout;
    }
}

bool ChildProcess::HasEnded() const { return platform::HasEnded(*m_state); }

std::optional<ProcessEnd> ChildProcess::End() const {
    const std::lock_guard lock(m_state->mutex);
    const std::optional<ChildEnd> end = ReadChildEnd(*m_state);
    if (!end) {
        FailWithErrno();
        return std::nullopt;
    }
    const auto timeOf = [](const timeval& time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    constexpr std::uint64_t kKibibyte = 1024;
    ProcessEnd told;
    told.status = StatusOf(*end, m_state->killedWith);
    told.signal = end->signal;
    told.cpuTime = std::chrono::ceil<milliseconds>(timeOf(end->usage.ru_utime) + timeOf(end->usage.ru_stime));
    if (end->usage.ru_maxrss > m_state->parentPeak)
        told.peakMemory = static_cast<std::uint64_t>(end->usage.ru_maxrss) * kKibibyte;
    return told;
}

KillOutcome ChildProcess::Kill(const KillRequest& request) const { return KillChild(*m_state, request); }

KillResult KillProcess(std::uint32_t id, std::int32_t exitStatus) {
    // Other values of the system's type mean groups of processes.
    const pid_t process = id <= std::numeric_limits<pid_t>::max() ? static_cast<pid_t>(id) : 0;
    const auto child = FindChild(process);
    if (!child) return KillStranger(process);
    return KillChild(*child, {exitStatus, KillScope::Process, milliseconds(0)}).result;
}

FileHandle MakeInputFile(std::string_view content) {
    FileHandle file(content.empty() ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                    : ::memfd_create("standard input", MFD_CLOEXEC));
    if (!file) FailWithErrno();
    if (!file || content.empty()) return file;
    if (!WriteAll(file, content)) return FileHandle();
    if (::lseek(file.Get(), 0, SEEK_SET) == 0) return file;
    FailWithErrno();
    return FileHandle();
}

}  // namespace quillon::platform
