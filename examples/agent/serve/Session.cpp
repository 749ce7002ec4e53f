#include "serve/Session.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "serve/CallParameters.h"

namespace quillon::agent {

namespace {

InvocationResult Cancelled() {
    InvocationResult result;
    result.resultCode = InvocationResult::kSystemFailure;
    result.errorMessage = "Cancelled before it began";
    return result;
}

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

}  // namespace

Session::Session(const Host& host, CallPool& pool, std::unique_ptr<Channel> channel)
    : m_host(host), m_pool(pool), m_channel(std::move(channel)), m_writer(*m_channel, [this] { Leave(); }) {}

void Session::Run() {
    ReadLines();
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_unanswered == 0; });
    }
    m_writer.Finish();
}

void Session::ReadLines() {
    LineSplitter splitter(kLongestLine);
    LineSplitter::Line line;
    std::array<char, 64 << 10> buffer;
    while (const std::size_t count = m_channel->Read(buffer.data(), buffer.size())) {
        std::string_view bytes(buffer.data(), count);
        while (splitter.Next(bytes, line)) Handle(line);
    }
    if (splitter.Rest(line)) Handle(line);
}

void Session::Handle(const LineSplitter::Line& line) {
    if (line.isTooLong)
        return Refuse(nullptr, "A line is longer than " + std::to_string(kLongestLine) + " bytes");
    if (IsBlank(line.text)) return;
    Request request;
    const std::string fault = ReadRequest(line.text, request);
    if (!fault.empty()) return Refuse(request.id, fault);
    if (!request.cancel.is_null()) return HandleCancel(request);
    if (IsKnown(request)) return Refuse(request.id, "A call with this id is not answered yet");
    StartCall(std::move(request));
}

void Session::HandleCancel(const Request& request) {
    std::shared_ptr<Call> call;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_calls.find(request.cancel.dump());
        if (found != m_calls.end()) call = found->second;
    }
    if (call == nullptr) return Refuse(request.id, "There is no call with this id");
    call->cancellation.Cancel();
    m_writer.Add(WriteAnswer(request.id, InvocationResult::kSucceeded, ""));
}

bool Session::IsKnown(const Request& request) {
    if (request.id.is_null()) return false;
    const std::lock_guard lock(m_mutex);
    return m_calls.contains(request.id.dump());
}

void Session::StartCall(Request request) {
    const auto call = std::make_shared<Call>();
    call->request = std::move(request);
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.size() < kMostWaiting; });
    if (m_isGone) return;
    m_calls.emplace(call->request.id.dump(), call);
    m_waiting.push_back(call);
    ++m_unanswered;
    if (!std::exchange(m_isInPool, true)) m_pool.Add(shared_from_this());
}

std::function<void()> Session::TakeCall(bool& haveMore) {
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<Call> call = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_isInPool = haveMore = !m_waiting.empty();
    m_changed.notify_all();
    return [this, session = shared_from_this(), call = std::move(call)] { RunCall(*call); };
}

void Session::RunCall(Call& call) {
    const std::string answer = WriteAnswer(call.request.id, Invoke(call));
    Forget(call);  // first, as a client that has the answer may use the id again
    m_writer.Add(answer);
    const std::lock_guard lock(m_mutex);
    --m_unanswered;
    m_changed.notify_all();
}

void Session::Forget(const Call& call) {
    const std::lock_guard lock(m_mutex);
    const auto [first, last] = m_calls.equal_range(call.request.id.dump());
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

void Session::Refuse(const nlohmann::json& id, const std::string& message) {
    m_writer.Add(WriteAnswer(id, InvocationResult::kBadParameter, message));
}

/// A client that is gone wants no further answer.
void Session::Leave() {
    m_channel->Stop();
    std::vector<std::shared_ptr<Call>> calls;
    {
        const std::lock_guard lock(m_mutex);
        m_isGone = true;
        for (const auto& [id, call] : m_calls) calls.push_back(call);
    }
    for (const auto& call : calls) call->cancellation.Cancel();
}

}  // namespace quillon::agent
