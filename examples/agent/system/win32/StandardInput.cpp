#include "system/StandardInput.h"

#include <windows.h>

#include <array>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"
#include "system/win32/LastErrorText.h"

namespace quillon::agent {

namespace {

constexpr DWORD kBufferSize = 64 << 10;

/// Returns whether a read of no bytes tells of a write of no bytes; of any other input, also of a socket, it
/// tells the end.
bool IsPipe(HANDLE handle) { return ::GetNamedPipeInfo(handle, nullptr, nullptr, nullptr, nullptr) != 0; }

}  // namespace

/// Standard input may be of any kind, and takes no overlapped reads. A thread reads ahead; at a stop it is
/// left behind with what it shares.
struct StandardInput::State {
    /// One thread fills the buffer, the other takes what is in it.
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        std::array<char, kBufferSize> buffer;
        std::string_view bytes;  // of the buffer: read, and not taken yet
        DWORD fault = ERROR_SUCCESS;
        bool hasEnded = false;
        bool isStopped = false;
    };

    static DWORD Fill(Shared& shared, DWORD& count);
    /// False, with an entry in the log, when there is no thread.
    bool Start();
    static void ReadAhead(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared = std::make_shared<Shared>();
    bool isStarted = false;
    bool hasFailed = false;
};

/// Returns why nothing could be read; 0 at the end, too.
DWORD StandardInput::State::Fill(Shared& shared, DWORD& count) {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    while (::ReadFile(input, shared.buffer.data(), kBufferSize, &count, nullptr)) {
        if (count > 0 || !IsPipe(input)) return ERROR_SUCCESS;
    }
    count = 0;
    const DWORD code = ::GetLastError();
    const bool isEnd = code == ERROR_BROKEN_PIPE || code == ERROR_HANDLE_EOF;
    return isEnd ? DWORD{ERROR_SUCCESS} : code;
}

/// Asks for no memory: the thread could tell nobody that there is none.
void StandardInput::State::ReadAhead(const std::shared_ptr<Shared>& shared) {
    for (DWORD count = 1; count != 0;) {
        const DWORD fault = Fill(*shared, count);
        std::unique_lock lock(shared->mutex);
        shared->bytes = std::string_view(shared->buffer.data(), count);
        shared->fault = fault;
        shared->hasEnded = count == 0;
        shared->changed.notify_all();
        shared->changed.wait(lock, [&] { return shared->isStopped || shared->bytes.empty(); });
        if (shared->isStopped) return;
    }
}

bool StandardInput::State::Start() {
    if (std::exchange(isStarted, true)) return true;
    try {
        std::thread(&State::ReadAhead, shared).detach();
        return true;
    } catch (const std::exception& error) {  // no thread, or no memory
        ServiceLocator::Get<ICLogger>()->Error("Standard input cannot be read: %s", error.what());
        return false;
    }
}

StandardInput::StandardInput() : m_state(std::make_unique<State>()) {}
StandardInput::~StandardInput() { Stop(); }

std::size_t StandardInput::Read(char* bytes, std::size_t size) {
    const std::shared_ptr<State::Shared> shared = m_state->shared;
    if (!m_state->Start()) {
        m_state->hasFailed = true;
        return 0;
    }
    std::unique_lock lock(shared->mutex);
    shared->changed.wait(lock,
                         [&] { return shared->isStopped || shared->hasEnded || !shared->bytes.empty(); });
    if (shared->isStopped) return 0;
    if (shared->fault != ERROR_SUCCESS) {
        m_state->hasFailed = true;
        const DWORD fault = std::exchange(shared->fault, ERROR_SUCCESS);
        ServiceLocator::Get<ICLogger>()->Error("Standard input cannot be read: %s",
                                               ReasonOf(static_cast<int>(fault)).c_str());
    }
    const std::size_t count = shared->bytes.copy(bytes, size);
    shared->bytes.remove_prefix(count);
    shared->changed.notify_all();
    return count;
}

bool StandardInput::HasFailed() const { return m_state->hasFailed; }

void StandardInput::Stop() {
    const std::lock_guard lock(m_state->shared->mutex);
    m_state->shared->isStopped = true;
    m_state->shared->changed.notify_all();
}

}  // namespace quillon::agent
