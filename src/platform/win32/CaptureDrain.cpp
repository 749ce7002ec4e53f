#include <array>
#include <list>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/ThreadPoolApi.h"
#include "platform/win32/CaptureState.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kMostPipes = 256;

/// A pipe that is read to nowhere, by the thread of the drain.
struct DrainedPipe {
    explicit DrainedPipe(FileHandle end) : reader(std::move(end)) {}

    /// The completion routine starts the next read. False when nobody can write any more.
    bool Read() {
        static std::array<char, 64 * 1024> nowhere;
        read = {};
        read.hEvent = this;  // which the system leaves to the caller
        hasEnded = ::ReadFileEx(reader.Get(), nowhere.data(), static_cast<DWORD>(nowhere.size()), &read,
                                &DrainedPipe::OnRead) == 0;
        return !hasEnded;
    }

    static void CALLBACK OnRead(DWORD error, DWORD, OVERLAPPED* read) {
        auto* const pipe = static_cast<DrainedPipe*>(read->hEvent);
        if (error != 0) {
            pipe->hasEnded = true;
        } else {
            pipe->Read();
        }
    }

    FileHandle reader;
    OVERLAPPED read{};
    bool hasEnded = false;
};

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
            ::WaitForSingleObjectEx(m_wake.Get(), INFINITE, TRUE);
            m_pipes.remove_if([](const DrainedPipe& pipe) { return pipe.hasEnded; });
        }
    }

    /// Returns whether there is something to do; otherwise the thread has to end.
    bool Adopt() {
        const std::lock_guard lock(m_mutex);
        for (FileHandle& reader : m_added) {
            if (!m_pipes.emplace_back(std::move(reader)).Read()) m_pipes.pop_back();
        }
        m_added.clear();
        if (m_pipes.size() > kMostPipes) ::CancelIoEx(m_pipes.front().reader.Get(), nullptr);
        m_runs = !m_pipes.empty();
        return m_runs;
    }

    std::mutex m_mutex;
    EventHandle m_wake;
    std::vector<FileHandle> m_added;
    bool m_runs = false;
    std::list<DrainedPipe> m_pipes;  // the thread's own
};

}  // namespace

void DrainInBackground(FileHandle reader) {
    static Drain& drain = *new Drain;  // the thread may outlive the static objects
    drain.Add(std::move(reader));
}

}  // namespace quillon::platform
