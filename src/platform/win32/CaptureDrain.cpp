#include <array>
#include <list>
#include <utility>

#include "platform/win32/CaptureState.h"

namespace quillon::platform {

namespace {

/// A pipe that is read to nowhere, by the thread of the drain.
struct DrainedPipe {
    explicit DrainedPipe(FileHandle end) : reader(std::move(end)) {}

    /// Starts a read. False when nobody can write any more.
    bool Read() {
        static std::array<char, 64 * 1024> nowhere;
        read = {};
        read.hEvent = this;  // which the system leaves to the caller
        isReading = ::ReadFileEx(reader.Get(), nowhere.data(), static_cast<DWORD>(nowhere.size()), &read,
                                 &DrainedPipe::OnRead) != 0;
        return isReading;
    }

    /// Starts no read: of a pipe that is never empty the wait would never come to its end.
    static void CALLBACK OnRead(DWORD error, DWORD, OVERLAPPED* read) {
        auto* const pipe = static_cast<DrainedPipe*>(read->hEvent);
        pipe->isReading = false;
        pipe->hasEnded = error != 0;
    }

    FileHandle reader;
    OVERLAPPED read{};
    bool isReading = false;
    bool hasEnded = false;
};

class CompletedPipes final : public DrainedPipes {
public:
    void Add(FileHandle reader) override { m_pipes.emplace_back(std::move(reader)); }
    [[nodiscard]] std::size_t Count() const override { return m_pipes.size(); }

    void CloseOldest() override {
        const DrainedPipe& oldest = m_pipes.front();
        ::CancelIoEx(oldest.reader.Get(), nullptr);
        while (oldest.isReading) ::SleepEx(INFINITE, TRUE);
        m_pipes.pop_front();
    }

    void Read(const EventHandle& wake) override {
        m_pipes.remove_if(
            [](DrainedPipe& pipe) { return !pipe.isReading && (pipe.hasEnded || !pipe.Read()); });
        if (!m_pipes.empty()) ::WaitForSingleObjectEx(wake.Get(), INFINITE, TRUE);
    }

private:
    std::list<DrainedPipe> m_pipes;
};

}  // namespace

std::unique_ptr<DrainedPipes> DrainedPipes::Make() { return std::make_unique<CompletedPipes>(); }

}  // namespace quillon::platform
