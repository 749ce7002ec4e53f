#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/ProcessApi.h"
#include "platform/ThreadPoolApi.h"
#include "platform/posix/CaptureState.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kMostPipes = 256;
/// Reads of one pipe before the others get their turn.
constexpr int kReadsATurn = 16;

/// The thread exists while there is a pipe, so that an agent without daemons has none.
class Drain {
public:
    void Add(FileHandle reader) {
        const std::lock_guard lock(m_mutex);
        m_added.push_back(std::move(reader));
        if (!m_wake) m_wake = CreateAutoResetEvent();
        // Without a thread the pipe stays open, and the next one tries again.
        if (!m_runs) m_runs = RunInBackground([this] { Run(); });
        if (m_wake) SignalEvent(m_wake);
    }

private:
    void Run() {
        while (Adopt()) {
            Await();
            std::erase_if(m_pipes, [](const FileHandle& pipe) { return !Empty(pipe.Get()); });
        }
    }

    /// Returns whether there is something to do; otherwise the thread has to end.
    bool Adopt() {
        const std::lock_guard lock(m_mutex);
        for (FileHandle& pipe : m_added) m_pipes.push_back(std::move(pipe));
        m_added.clear();
        while (m_pipes.size() > kMostPipes) m_pipes.pop_front();
        m_runs = !m_pipes.empty();
        return m_runs;
    }

    void Await() {
        std::vector<pollfd> waited{{m_wake.Get(), POLLIN, 0}};
        for (const FileHandle& pipe : m_pipes) waited.push_back({pipe.Get(), POLLIN, 0});
        ::poll(waited.data(), waited.size(), -1);
        std::uint64_t count = 0;
        if (waited[0].revents != 0) static_cast<void>(!::read(m_wake.Get(), &count, sizeof count));
    }

    /// Returns false when nobody can write any more.
    static bool Empty(int pipe) {
        static char nowhere[64 * 1024];
        for (int i = 0; i < kReadsATurn; ++i) {
            const ssize_t count = ::read(pipe, nowhere, sizeof nowhere);
            if (count == 0) return false;
            if (count < 0) return errno == EAGAIN || errno == EINTR;
        }
        return true;
    }

    std::mutex m_mutex;
    EventHandle m_wake;
    std::vector<FileHandle> m_added;
    bool m_runs = false;
    std::deque<FileHandle> m_pipes;  // the thread's own
};

}  // namespace

void DrainInBackground(FileHandle reader) {
    static Drain& drain = *new Drain;  // the thread may outlive the static objects
    drain.Add(std::move(reader));
}

}  // namespace quillon::platform
