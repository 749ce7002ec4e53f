#include "system/Listener.h"

#include <windows.h>

#include <sddl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "system/win32/Handle.h"
#include "system/win32/LastErrorText.h"

namespace quillon::agent {

namespace {

constexpr DWORD kPatienceMs = 5000;
constexpr DWORD kPauseMs = 100;
constexpr DWORD kBufferSize = 64 << 10;
constexpr DWORD kLongestRead = 1 << 20;
constexpr const char* kPipes = R"(\\.\pipe\)";

Handle MakeEvent() { return Handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

/// One operation that goes on while its thread waits for it, or for the event of a stop. One at a time has
/// the event of its end.
class Operation {
public:
    explicit Operation(HANDLE done) { m_overlapped.hEvent = done; }

    OVERLAPPED* Get() { return &m_overlapped; }

    /// Finishes what a call began, which returned `isDone`. False with GetLastError() when it failed,
    /// ERROR_OPERATION_ABORTED when `stop` was set first, and ERROR_TIMEOUT when it took too long.
    bool Await(HANDLE handle, bool isDone, DWORD patience, HANDLE stop, DWORD& count) {
        if (!isDone && ::GetLastError() != ERROR_IO_PENDING) return false;
        const DWORD fault = Wait(patience, stop);
        if (fault != ERROR_SUCCESS) ::CancelIoEx(handle, &m_overlapped);
        if (::GetOverlappedResult(handle, &m_overlapped, &count, TRUE) == 0 && fault == ERROR_SUCCESS)
            return false;
        ::SetLastError(fault);
        return fault == ERROR_SUCCESS;
    }

private:
    /// `stop` may be null. A stop comes before an end, or a client that always writes would be read for ever.
    DWORD Wait(DWORD patience, HANDLE stop) const {
        const HANDLE events[] = {stop, m_overlapped.hEvent};
        const bool canStop = stop != nullptr;
        const DWORD code =
            ::WaitForMultipleObjects(canStop ? 2 : 1, canStop ? events : events + 1, FALSE, patience);
        if (code == WAIT_FAILED) return ::GetLastError();
        if (code == WAIT_TIMEOUT) return ERROR_TIMEOUT;
        return canStop && code == WAIT_OBJECT_0 ? ERROR_OPERATION_ABORTED : ERROR_SUCCESS;
    }

    OVERLAPPED m_overlapped = {};
};

void WarnUnlessGone(const char* what) {
    const DWORD code = ::GetLastError();
    constexpr DWORD kExpected[] = {ERROR_BROKEN_PIPE, ERROR_NO_DATA, ERROR_PIPE_NOT_CONNECTED,
                                   ERROR_OPERATION_ABORTED};
    if (std::ranges::find(kExpected, code) == std::end(kExpected))
        ServiceLocator::Get<ICLogger>()->Warn("%s: %s", what, ReasonOf(static_cast<int>(code)).c_str());
}

class PipeChannel final : public Channel {
public:
    /// Whether it has what it needs to serve a client.
    bool IsReady() const { return m_read != nullptr && m_written != nullptr && m_stop != nullptr; }
    void Take(Handle pipe) { m_pipe = std::move(pipe); }

    /// A client may write nothing, which is read as such and is not its end.
    std::size_t Read(char* bytes, std::size_t size) override {
        DWORD count = 0;
        while (ReadOnce(bytes, size, count)) {
            if (count > 0) return count;
        }
        WarnUnlessGone("A client is left, as it cannot be read from");
        return 0;
    }

    bool Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            Operation operation(m_written.get());
            DWORD count = 0;
            const bool isDone =
                ::WriteFile(m_pipe.get(), bytes.data(),
                            static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kBufferSize)), nullptr,
                            operation.Get()) != 0;
            if (!operation.Await(m_pipe.get(), isDone, kPatienceMs, nullptr, count)) {  // whatever is stopped
                WarnUnlessGone("A client is left, as no answer can be sent");
                return false;
            }
            bytes.remove_prefix(count);
        }
        return true;
    }

    /// A pipe has no half: whoever closes it reads no more.
    bool IsGone() override { return !::PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr); }

    void Stop() override { ::SetEvent(m_stop.get()); }

private:
    bool ReadOnce(char* bytes, std::size_t size, DWORD& count) {
        Operation operation(m_read.get());
        const bool isDone =
            ::ReadFile(m_pipe.get(), bytes, static_cast<DWORD>(std::min<std::size_t>(size, kLongestRead)),
                       nullptr, operation.Get()) != 0;
        return operation.Await(m_pipe.get(), isDone, INFINITE, m_stop.get(), count);
    }

    Handle m_pipe;
    Handle m_read = MakeEvent();
    Handle m_written = MakeEvent();
    Handle m_stop = MakeEvent();
};

/// The system, the administrators and the creator, whom the access list calls the owner.
constexpr const wchar_t* kAccess = L"D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;OW)";

class PipeListener final : public Listener {
public:
    explicit PipeListener(std::wstring name) : m_name(std::move(name)) {}
    ~PipeListener() override { ::LocalFree(m_descriptor); }

    /// Makes the first instance of the pipe, which must not be there already.
    bool Open() {
        if ((m_stop = MakeEvent()) == nullptr || (m_connected = MakeEvent()) == nullptr) return false;
        if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1, &m_descriptor,
                                                                    nullptr))
            return false;
        m_next = MakeInstance(FILE_FLAG_FIRST_PIPE_INSTANCE);
        return m_next != nullptr;
    }

    /// What a client needs is made before it is taken: one that lacks anything waits.
    std::unique_ptr<Channel> Accept() override {
        do {
            auto client = std::make_unique<PipeChannel>();
            if (m_next == nullptr) m_next = MakeInstance(0);
            if (client->IsReady() && m_next != nullptr && AwaitClient()) {
                client->Take(std::exchange(m_next, MakeInstance(0)));
                return client;
            }
        } while (!IsStopped(0) && Pause());
        return nullptr;
    }

    void Stop() override { ::SetEvent(m_stop.get()); }

private:
    /// Keeps the instance, whatever happens: while there is one, the name is nobody else's.
    bool AwaitClient() {
        Operation operation(m_connected.get());
        DWORD count = 0;
        const bool isDone = ::ConnectNamedPipe(m_next.get(), operation.Get()) != 0;
        if ((!isDone && ::GetLastError() == ERROR_PIPE_CONNECTED) ||
            operation.Await(m_next.get(), isDone, INFINITE, m_stop.get(), count))
            return true;
        const DWORD code = ::GetLastError();
        ::DisconnectNamedPipe(m_next.get());  // a client that is gone again
        ::SetLastError(code);
        return false;
    }

    bool IsStopped(DWORD patience) const {
        const DWORD code = ::GetLastError();
        const bool isStopped = ::WaitForSingleObject(m_stop.get(), patience) == WAIT_OBJECT_0;
        ::SetLastError(code);
        return isStopped;
    }

    /// Lets some time go, so that the client costs no processor time, unless it is gone again. False when
    /// there is no more to wait for.
    bool Pause() const {
        if (::GetLastError() == ERROR_NO_DATA) return true;
        ServiceLocator::Get<ICLogger>()->Warn("A client waits: %s", LastErrorText().c_str());
        return !IsStopped(kPauseMs);
    }

    Handle MakeInstance(DWORD flags) {
        SECURITY_ATTRIBUTES security = {sizeof security, m_descriptor, FALSE};
        const HANDLE pipe =
            ::CreateNamedPipeW(m_name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | flags,
                               PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                               PIPE_UNLIMITED_INSTANCES, kBufferSize, kBufferSize, 0, &security);
        return Handle(pipe == INVALID_HANDLE_VALUE ? nullptr : pipe);
    }

    std::wstring m_name;
    PSECURITY_DESCRIPTOR m_descriptor = nullptr;
    Handle m_next;  // waits for the next client
    Handle m_connected;
    Handle m_stop;
};

}  // namespace

std::unique_ptr<Listener> Listen(const std::string& address, std::string& fault) {
    if (!address.starts_with(kPipes)) {
        fault = std::string("the name of a pipe begins with ") + kPipes;
        return nullptr;
    }
    auto listener = std::make_unique<PipeListener>(StringUtils::NarrowStringToWide(address));
    if (listener->Open()) return listener;
    fault = LastErrorText();
    return nullptr;
}

}  // namespace quillon::agent
