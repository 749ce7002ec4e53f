#include "providers/WmiCaller.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/ComApi.h"
#include "platform/ThreadPoolApi.h"

namespace quillon {

namespace {

// A call that waits no longer than the limit itself is given the time to answer.
constexpr std::chrono::milliseconds kGrace{60};
constexpr HRESULT kNoResources = static_cast<HRESULT>(0x800705AA);  // ERROR_NO_SYSTEM_RESOURCES

/// What the call noted on its own thread.
std::wstring DetailsOf(HRESULT code) {
    return FAILED(code) ? platform::TakeWbemErrorDetails() : std::wstring();
}

}  // namespace

/// What the thread and its caller share. The thread ends when the caller does, or after the call that the
/// caller has left.
struct WmiCaller::Worker {
    std::mutex mutex;
    std::condition_variable changed;
    Call call;
    HRESULT result = S_OK;
    std::wstring details;
    bool isBusy = false;
    bool mustEnd = false;

    void Work();
    void RunCalls(std::unique_lock<std::mutex>& lock);
    HRESULT RunOne(std::unique_lock<std::mutex>& lock);
};

void WmiCaller::Worker::Work() {
    const bool hasCom = platform::InitializeCom() >= 0;
    {
        std::unique_lock lock(mutex);
        RunCalls(lock);
    }
    if (hasCom) platform::UninitializeCom();
}

void WmiCaller::Worker::RunCalls(std::unique_lock<std::mutex>& lock) {
    for (;;) {
        changed.wait(lock, [this] { return isBusy || mustEnd; });
        if (!isBusy) return;
        result = RunOne(lock);
        isBusy = false;
        if (mustEnd) base::CountWmiCallsLeft(-1);  // it was left meanwhile
        changed.notify_all();
    }
}

/// What the call owns is released here as well, because that too may call WMI.
HRESULT WmiCaller::Worker::RunOne(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    HRESULT code = S_OK;
    try {
        code = call();
    } catch (...) {
        code = E_FAIL;
    }
    call = nullptr;
    std::wstring noted = DetailsOf(code);
    lock.lock();
    details = std::move(noted);
    return code;
}

int WmiCaller::LeftBehind() { return static_cast<int>(base::WmiCallsLeft()); }

WmiCaller::~WmiCaller() {
    if (m_worker == nullptr) return;
    const std::lock_guard lock(m_worker->mutex);
    m_worker->mustEnd = true;
    m_worker->changed.notify_all();
}

bool WmiCaller::Start() {
    if (m_worker != nullptr) return true;
    if (LeftBehind() >= kMostLeftBehind) return false;
    auto worker = std::make_shared<Worker>();
    if (!platform::RunInBackground([worker] { worker->Work(); }, "wmi")) return false;
    m_worker = std::move(worker);
    return true;
}

HRESULT WmiCaller::Run(Call call) {
    m_details.clear();
    if (!m_limit.Exists()) {
        const HRESULT code = call();
        m_details = DetailsOf(code);
        return code;
    }
    if (const HRESULT end = m_limit.Look(); FAILED(end)) return end;
    if (!Start()) return kNoResources;
    {
        const std::lock_guard lock(m_worker->mutex);
        m_worker->call = std::move(call);
        m_worker->isBusy = true;
    }
    m_worker->changed.notify_all();
    return Await();
}

std::wstring WmiCaller::TakeDetails() { return std::exchange(m_details, {}); }

HRESULT WmiCaller::Await() {
    std::unique_lock lock(m_worker->mutex);
    const auto isDone = [this] { return !m_worker->isBusy; };
    while (!m_worker->changed.wait_until(lock, m_limit.NextLook(), isDone)) {
        const HRESULT end = m_limit.Look();
        if (SUCCEEDED(end)) continue;
        if (m_worker->changed.wait_for(lock, kGrace, isDone)) break;
        m_worker->mustEnd = true;
        base::CountWmiCallsLeft(1);
        lock.unlock();
        m_worker.reset();
        m_hasLeft = true;
        return end;
    }
    m_details = std::move(m_worker->details);
    return m_worker->result;
}

}  // namespace quillon
