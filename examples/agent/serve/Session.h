#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/Cancellation.h"
#include "host/Host.h"
#include "serve/AnswerWriter.h"
#include "serve/CallPool.h"
#include "serve/LineSplitter.h"
#include "serve/Request.h"
#include "system/Channel.h"

namespace quillon::agent {

/// Serves one client: reads requests, has their calls run by the pool, and writes answers as they come.
class Session final : public CallSource, public std::enable_shared_from_this<Session> {
public:
    /// The longest line, in bytes.
    static constexpr std::size_t kLongestLine = 1U << 20;
    /// While so many calls wait, no further line is read.
    static constexpr std::size_t kMostWaiting = 1024;

    Session(const Host& host, CallPool& pool, std::shared_ptr<Channel> channel);

    /// Reads until the client ends or Stop(), and returns when every call is answered. The calls of a client
    /// that is gone are cancelled, at most a second later.
    void Run();
    /// Has no further line read. May be called on any thread, and by a callback.
    void Stop() { m_channel->Stop(); }

    std::function<void()> TakeCall(bool& haveMore) override;

private:
    struct Call {
        Request request;
        Cancellation cancellation;
    };

    void ReadLines();
    void Handle(const LineSplitter::Line& line);
    void HandleCancel(const Request& request);
    void StartCall(const Request& request);
    void Enqueue(std::shared_ptr<Call> call);
    void JoinPool();
    void Resume();
    bool IsKnown(const Request& request);
    void RunCall(Call& call);
    void Forget(const Call& call);
    InvocationResult Invoke(Call& call) const;
    std::string AnswerOf(Call& call) const;
    std::vector<std::shared_ptr<Call>> UnansweredCalls();
    void Refuse(const std::string& id, const std::string& message);
    void AddWhenRoom(const std::string& answer);
    void Leave();
    template <class Condition>
    void AwaitCalls(Condition condition);

    const Host& m_host;
    CallPool& m_pool;
    const std::shared_ptr<Channel> m_channel;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Call>> m_waiting;
    std::multimap<std::string, std::shared_ptr<Call>> m_calls;  // by id, waiting or running
    std::size_t m_unanswered = 0;                               // calls
    bool m_isInPool = false;
    bool m_isGone = false;  // the client
    AnswerWriter m_writer;  // the last, as its thread uses the others
};

}  // namespace quillon::agent
