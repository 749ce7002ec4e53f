#include "serve/Server.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "quillon/ICLogger.h"
#include "quillon/IShutdownNotifier.h"
#include "quillon/ServiceLocator.h"
#include "quillon/ThreadUtils.h"
#include "serve/AwaitMemory.h"
#include "serve/CallPool.h"
#include "serve/Session.h"
#include "system/Listener.h"
#include "system/Service.h"
#include "system/StandardInput.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kMostClients = 64;
constexpr std::chrono::seconds kPatience{10};
constexpr int kFailed = 1;  // exit code of an agent that cannot go on

/// The agent's own standard streams.
class StandardChannel final : public Channel {
public:
    /// Sets `hasFailed` when standard input cannot be read.
    StandardChannel(const WriteFunction& write, std::atomic<bool>& hasFailed)
        : m_write(write), m_hasFailed(hasFailed) {}

    std::size_t Read(char* bytes, std::size_t size) override {
        const std::size_t count = m_input.Read(bytes, size);
        m_hasFailed = m_input.HasFailed();
        return count;
    }
    bool Write(std::string_view bytes) override { return m_write(bytes); }
    bool IsGone() override { return false; }  // the next answer tells
    void Stop() override { m_input.Stop(); }

private:
    const WriteFunction& m_write;
    std::atomic<bool>& m_hasFailed;
    StandardInput m_input;
};

/// The sessions, each on a thread of its own.
class Sessions {
public:
    Sessions(const Host& host, std::size_t parallel) : m_host(host), m_pool(parallel) {}
    ~Sessions() {
        if (m_lastEnded.joinable()) m_lastEnded.join();
    }

    void Start(std::unique_ptr<Channel> channel);
    /// Has the sessions answer what they have read, and end.
    void StopAll();
    /// Waits until all have ended, after StopAll() ten seconds at most; false when that was not enough.
    bool AwaitAll();

private:
    struct Client {
        std::shared_ptr<Session> session;
        std::thread thread;
    };
    using Clients = std::list<Client>;

    void Add(const std::shared_ptr<Channel>& channel);
    void Run(Clients::iterator client);

    const Host& m_host;
    CallPool m_pool;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clients m_clients;
    std::thread m_lastEnded;  // of the session that ended last; it does nothing any more
    bool m_isStopped = false;
};

void Sessions::Start(std::unique_ptr<Channel> channel) {
    const auto client = AwaitMemory([&] { return std::shared_ptr<Channel>(std::move(channel)); });
    try {
        AwaitMemory([&] { Add(client); });
    } catch (const std::system_error& error) {  // no thread
        ServiceLocator::Get<ICLogger>()->Error("A client cannot be served: %s", error.what());
    }
}

/// Changes nothing when it throws.
void Sessions::Add(const std::shared_ptr<Channel>& channel) {
    const std::lock_guard lock(m_mutex);
    if (m_clients.size() >= kMostClients) {
        channel->Write(
            WriteAnswer(Request::kNoId, InvocationResult::kSystemFailure, "Too many clients are connected"));
        return;
    }
    const auto client = m_clients.emplace(m_clients.end());
    try {
        client->session = std::make_shared<Session>(m_host, m_pool, channel);
        if (m_isStopped) client->session->Stop();
        client->thread = std::thread([this, client] { Run(client); });
    } catch (...) {
        m_clients.erase(client);
        throw;
    }
}

void Sessions::Run(Clients::iterator client) {
    ThreadUtils::SetThreadName("client");
    client->session->Run();
    const std::lock_guard lock(m_mutex);
    if (m_lastEnded.joinable()) m_lastEnded.join();  // it holds no lock any more, or this one would not
    m_lastEnded = std::move(client->thread);
    m_clients.erase(client);
    m_changed.notify_all();
}

void Sessions::StopAll() {
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    for (const Client& client : m_clients) client.session->Stop();
    m_changed.notify_all();
}

bool Sessions::AwaitAll() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isStopped || m_clients.empty(); });
    return m_changed.wait_for(lock, kPatience, [this] { return m_clients.empty(); });
}

/// Has something stopped when the host shuts down.
class ShutdownWatch {
public:
    explicit ShutdownWatch(std::function<void()> stop)
        : m_registration(Notifier().OnShutdown(std::move(stop))) {}
    ~ShutdownWatch() { Notifier().ForgetCallback(m_registration); }
    ShutdownWatch(const ShutdownWatch&) = delete;
    ShutdownWatch& operator=(const ShutdownWatch&) = delete;

private:
    static IShutdownNotifier& Notifier() { return *ServiceLocator::Get<IShutdownNotifier>(); }

    std::uint64_t m_registration;
};

/// A call that does not end holds a thread that uses the host: the process cannot be left in order.
void AwaitCalls(Sessions& sessions) {
    if (sessions.AwaitAll()) return;
    ServiceLocator::Get<ICLogger>()->Error("A call has not ended; the agent ends without it");
    std::_Exit(kFailed);
}

int ServeStandardStreams(Sessions& sessions, const WriteFunction& write) {
    const ShutdownWatch watch([&sessions] {
        TellStopping();
        sessions.StopAll();
    });
    TellReady();
    std::atomic<bool> hasFailed = false;
    sessions.Start(std::make_unique<StandardChannel>(write, hasFailed));
    AwaitCalls(sessions);
    return hasFailed ? kFailed : 0;
}

int ServeAddress(Sessions& sessions, const std::string& address) {
    std::string fault;
    const std::unique_ptr<Listener> listener = Listen(address, fault);
    if (listener == nullptr) throw std::runtime_error("Cannot listen at '" + address + "': " + fault);
    const ShutdownWatch watch([&sessions, &listener] {
        TellStopping();
        listener->Stop();
        sessions.StopAll();
    });
    ServiceLocator::Get<ICLogger>()->Info("Serving at '%s'", address.c_str());
    TellReady();
    // A client that there is no memory for waits.
    while (auto client = AwaitMemory([&] { return listener->Accept(); })) sessions.Start(std::move(client));
    sessions.StopAll();
    AwaitCalls(sessions);
    return 0;
}

}  // namespace

int Serve(const Host& host, const ServeSettings& settings, const WriteFunction& writeToOutput) {
    Sessions sessions(host, settings.parallel);
    return settings.address.empty() ? ServeStandardStreams(sessions, writeToOutput)
                                    : ServeAddress(sessions, settings.address);
}

}  // namespace quillon::agent
