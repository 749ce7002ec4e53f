#include "serve/Session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <string_view>
#include <utility>

#include "serve/AwaitMemory.h"
#include "serve/CallParameters.h"

namespace quillon::agent {

namespace {

InvocationResult Cancelled() {
    InvocationResult result;
    result.resultCode = InvocationResult::kSystemFailure;
    result.errorMessage = "Cancelled before it began";
    return result;
}

/// Without memory, which the short text of the message does not need.
InvocationResult WithoutMemory() {
    InvocationResult result;
    result.resultCode = InvocationResult::kMethodThrew;
    result.errorMessage = "Out of memory";
    return result;
}

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

}  // namespace

Session::Session(const Host& host, CallPool& pool, std::shared_ptr<Channel> channel)
    : m_host(host),
      m_pool(pool),
      m_channel(std::move(channel)),
      m_writer(
          *m_channel, [this] { Leave(); }, [this] { Resume(); }) {}

void Session::Run() {
    ReadLines();
    AwaitCalls([this] { return m_unanswered == 0; });
    m_writer.Finish();
}

/// Waits for what the calls bring about. Meanwhile nothing is read, so nothing else tells that the client is
/// gone, whose calls would keep the pool from those of other clients.
template <class Condition>
void Session::AwaitCalls(Condition condition) {
    constexpr std::chrono::seconds kLook{1};
    std::unique_lock lock(m_mutex);
    while (!m_changed.wait_for(lock, kLook, condition)) {
        const bool isLost = !m_isGone && m_channel->IsGone();
        lock.unlock();
        if (isLost) Leave();
        lock.lock();
    }
}

void Session::ReadLines() {
    LineSplitter splitter(kLongestLine);
    LineSplitter::Line line;
    std::array<char, 64 << 10> buffer;
    while (const std::size_t count = m_channel->Read(buffer.data(), buffer.size())) {
        std::string_view bytes(buffer.data(), count);
        while (AwaitMemory([&] { return splitter.Next(bytes, line); })) AwaitMemory([&] { Handle(line); });
    }
    if (splitter.Rest(line)) AwaitMemory([&] { Handle(line); });
}

/// Changes nothing when there is no memory: what it does last is to add an answer or a call.
void Session::Handle(const LineSplitter::Line& line) {
    if (line.isTooLong)
        return Refuse(Request::kNoId, "A line is longer than " + std::to_string(kLongestLine) + " bytes");
    if (IsBlank(line.text)) return;
    Request request;
    const std::string fault = ReadRequest(line.text, request);
    if (!fault.empty()) return Refuse(request.id, fault);
    if (!request.cancel.empty()) return HandleCancel(request);
    if (IsKnown(request)) return Refuse(request.id, "A call with this id is not answered yet");
    StartCall(request);
}

void Session::HandleCancel(const Request& request) {
    std::shared_ptr<Call> call;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_calls.find(request.cancel);
        if (found != m_calls.end()) call = found->second;
    }
    if (call == nullptr) return Refuse(request.id, "There is no call with this id");
    const std::string answer = WriteAnswer(request.id, InvocationResult::kSucceeded, "");
    call->cancellation.Cancel();
    AddWhenRoom(answer);
}

bool Session::IsKnown(const Request& request) {
    if (request.id == Request::kNoId) return false;
    const std::lock_guard lock(m_mutex);
    return m_calls.contains(request.id);
}

void Session::StartCall(const Request& request) {
    const auto call = std::make_shared<Call>();
    call->request = request;
    AwaitCalls([this] { return m_waiting.size() < kMostWaiting; });
    const std::lock_guard lock(m_mutex);  // only this thread adds calls
    if (!m_isGone) Enqueue(call);
}

/// All or nothing; the caller holds the lock.
void Session::Enqueue(std::shared_ptr<Call> call) {
    const auto entry = m_calls.emplace(call->request.id, call);
    try {
        m_waiting.push_back(std::move(call));
    } catch (...) {
        m_calls.erase(entry);
        throw;
    }
    ++m_unanswered;
    JoinPool();
}

/// A client that takes its answers too slowly has no call run, which would hold a thread of the pool until
/// its answer has room: the threads are there for the other clients. The caller holds the lock.
void Session::JoinPool() {
    if (m_isInPool || m_waiting.empty() || !m_writer.HasRoom()) return;
    m_isInPool = true;
    AwaitMemory([this] { m_pool.Add(shared_from_this()); });
}

void Session::Resume() {
    const std::lock_guard lock(m_mutex);
    JoinPool();
}

std::function<void()> Session::TakeCall(bool& haveMore) {
    const std::lock_guard lock(m_mutex);
    std::function<void()> run = [this, session = shared_from_this(), call = m_waiting.front()] {
        RunCall(*call);
    };
    m_waiting.pop_front();
    m_isInPool = haveMore = !m_waiting.empty() && m_writer.HasRoom();
    m_changed.notify_all();
    return run;
}

void Session::RunCall(Call& call) {
    const std::string answer = AnswerOf(call);
    Forget(call);  // first, as a client that has the answer may use the id again
    m_writer.Add(answer);
    const std::lock_guard lock(m_mutex);
    --m_unanswered;
    m_changed.notify_all();
}

/// A table for which there is no memory as text is left out.
std::string Session::AnswerOf(Call& call) const {
    InvocationResult result;
    try {
        result = Invoke(call);
        return WriteAnswer(call.request.id, result);
    } catch (const std::bad_alloc&) {
        result = WithoutMemory();
    }
    return AwaitMemory([&] { return WriteAnswer(call.request.id, result); });
}

void Session::Forget(const Call& call) {
    const std::lock_guard lock(m_mutex);
    const auto [first, last] = m_calls.equal_range(call.request.id);
    m_calls.erase(
        std::find_if(first, last, [&call](const auto& item) { return item.second.get() == &call; }));
}

InvocationResult Session::Invoke(Call& call) const {
    if (call.cancellation.IsCancelled()) return Cancelled();
    const InvocationScope scope(call.cancellation);
    CallParameters parameters;
    return m_host.Run(
        call.request.method, [&](const IMethodMetadataReader& method, InvocationResult& result) {
            return parameters.Read(call.request.parameters, method, result) ? &parameters.Get() : nullptr;
        });
}

void Session::Refuse(const std::string& id, const std::string& message) {
    AddWhenRoom(WriteAnswer(id, InvocationResult::kBadParameter, message));
}

/// Only on the thread that reads: the client is to take its answers before it says more.
void Session::AddWhenRoom(const std::string& answer) {
    m_writer.AwaitRoom();
    m_writer.Add(answer);
}

/// A client that is gone wants no further answer.
void Session::Leave() {
    m_channel->Stop();
    const auto calls = AwaitMemory([this] { return UnansweredCalls(); });
    for (const auto& call : calls) call->cancellation.Cancel();
}

std::vector<std::shared_ptr<Session::Call>> Session::UnansweredCalls() {
    const std::lock_guard lock(m_mutex);
    m_isGone = true;
    std::vector<std::shared_ptr<Call>> calls;
    for (const auto& [id, call] : m_calls) calls.push_back(call);
    return calls;
}

}  // namespace quillon::agent
