#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "platform/CaptureState.h"

namespace quillon::platform {

namespace {

/// Reads of one pipe before the others get their turn.
constexpr int kReadsATurn = 16;
constexpr useconds_t kPauseUs = 10'000;

class PolledPipes final : public DrainedPipes {
public:
    void Add(FileHandle reader) override { m_pipes.push_back(std::move(reader)); }
    [[nodiscard]] std::size_t Count() const override { return m_pipes.size(); }
    void CloseOldest() override { m_pipes.pop_front(); }

    void Read(const EventHandle& wake) override {
        std::vector<pollfd> waited{{wake.Get(), POLLIN, 0}};
        for (const FileHandle& pipe : m_pipes) waited.push_back({pipe.Get(), POLLIN, 0});
        if (::poll(waited.data(), waited.size(), -1) < 0) ::usleep(kPauseUs);  // no memory for it
        std::uint64_t count = 0;
        if (waited[0].revents != 0) static_cast<void>(!::read(wake.Get(), &count, sizeof count));
        std::erase_if(m_pipes, [](const FileHandle& pipe) { return !Empty(pipe.Get()); });
    }

private:
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

    std::deque<FileHandle> m_pipes;
};

}  // namespace

std::unique_ptr<DrainedPipes> DrainedPipes::Make() { return std::make_unique<PolledPipes>(); }

}  // namespace quillon::platform
