#include <algorithm>
#include <array>
#include <list>
#include <utility>

#include "platform/win32/CaptureState.h"

namespace quillon::platform {

namespace {

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
    bool isClosing = false;
};

class CompletedPipes final : public DrainedPipes {
public:
    void Add(FileHandle reader) override {
        if (!m_pipes.emplace_back(std::move(reader)).Read()) m_pipes.pop_back();
    }
    [[nodiscard]] std::size_t Count() const override { return m_pipes.size(); }

    /// It goes once its read has come to its end.
    void CloseOldest() override {
        const auto pipe = std::find_if(m_pipes.begin(), m_pipes.end(),
                                       [](const DrainedPipe& candidate) { return !candidate.isClosing; });
        if (pipe == m_pipes.end()) return;
        pipe->isClosing = true;
        ::CancelIoEx(pipe->reader.Get(), nullptr);
    }

    void Read(const EventHandle& wake) override {
        ::WaitForSingleObjectEx(wake.Get(), INFINITE, TRUE);
        m_pipes.remove_if([](const DrainedPipe& pipe) { return pipe.hasEnded; });
    }

private:
    std::list<DrainedPipe> m_pipes;
};

}  // namespace

std::unique_ptr<DrainedPipes> DrainedPipes::Make() { return std::make_unique<CompletedPipes>(); }

}  // namespace quillon::platform
