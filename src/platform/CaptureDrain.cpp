#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "platform/CaptureState.h"
#include "platform/ThreadPoolApi.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kMostPipes = 256;

/// The thread and its event exist while there is a pipe, so that an agent without daemons has none.
class Drain {
public:
    void Add(FileHandle reader) {
        const std::lock_guard lock(m_mutex);
        m_added.push_back(std::move(reader));
        Start();
        if (m_wake) SignalEvent(m_wake);
    }

    /// Without a thread, and without what wakes it, the pipes stay open, and the next command tries again.
    void Resume() {
        const std::lock_guard lock(m_mutex);
        if (!m_added.empty()) Start();
    }

private:
    void Start() {
        if (!m_wake) m_wake = CreateAutoResetEvent();
        if (m_wake && !m_runs) m_runs = RunInBackground([this] { Run(); }, "drain");
    }

    void Run() {
        constexpr std::chrono::milliseconds kPause{10};
        for (;;) {
            try {
                while (Adopt()) m_pipes->Read(m_wake);
                return;
            } catch (const std::bad_alloc&) {  // the commands wait meanwhile
                std::this_thread::sleep_for(kPause);
            }
        }
    }

    /// Returns whether there is something to do; otherwise the thread has to end.
    bool Adopt() {
        const std::lock_guard lock(m_mutex);
        for (; !m_added.empty(); m_added.pop_back()) m_pipes->Add(std::move(m_added.back()));
        for (std::size_t count = m_pipes->Count(); count > kMostPipes; --count) m_pipes->CloseOldest();
        m_runs = m_pipes->Count() > 0;
        if (!m_runs) m_wake.Reset();
        return m_runs;
    }

    std::mutex m_mutex;
    EventHandle m_wake;
    std::vector<FileHandle> m_added;
    bool m_runs = false;
    const std::unique_ptr<DrainedPipes> m_pipes = DrainedPipes::Make();  // the thread's own
};

Drain& TheDrain() {
    static Drain& drain = *new Drain;  // the thread may outlive the static objects
    return drain;
}

}  // namespace

void DrainInBackground(FileHandle reader) { TheDrain().Add(std::move(reader)); }

void ResumeDrain() { TheDrain().Resume(); }

}  // namespace quillon::platform
