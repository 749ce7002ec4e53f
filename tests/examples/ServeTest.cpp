#include <gmock/gmock.h>

#include <condition_variable>
#include <nlohmann/json.hpp>
#include <thread>

#include "examples/RunAgent.h"
#include "quillon/ServiceLocator.h"
#include "serve/LineSplitter.h"
#include "serve/Session.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::test {

namespace {

using namespace agent;
using nlohmann::json;
using testing::HasSubstr;
using testing::SizeIs;

/// A client in memory: what it says is read in pieces of any size, and it may stop listening.
class FakeClient {
public:
    void Say(const std::string& bytes) {
        const std::lock_guard lock(m_mutex);
        m_said += bytes;
        m_changed.notify_all();
    }
    void Hang(bool isGone) {
        const std::lock_guard lock(m_mutex);
        m_isGone = isGone;
    }
    /// Takes no answer until it is woken up, or ends.
    void Sleep(bool isAsleep) {
        const std::lock_guard lock(m_mutex);
        m_isAsleep = isAsleep;
        m_changed.notify_all();
    }
    void End() {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }
    /// Waits for so many answers in all, unless none comes for a minute, and returns them in the order of
    /// their coming.
    std::vector<json> Answers(std::size_t count) {
        std::unique_lock lock(m_mutex);
        bool hasCome = true;
        while (hasCome && m_answers.size() < count) {
            hasCome = m_changed.wait_for(lock, std::chrono::minutes(1), [this, before = m_answers.size()] {
                return m_answers.size() > before;
            });
        }
        return m_answers;
    }

    std::unique_ptr<Channel> MakeChannel(std::size_t piece) { return std::make_unique<Side>(*this, piece); }

private:
    class Side final : public Channel {
    public:
        Side(FakeClient& client, std::size_t piece) : m_client(client), m_piece(piece) {}

        std::size_t Read(char* bytes, std::size_t size) override {
            std::unique_lock lock(m_client.m_mutex);
            m_client.m_changed.wait(
                lock, [this] { return m_client.m_hasEnded || m_client.m_read < m_client.m_said.size(); });
            const std::size_t count = m_client.m_said.copy(bytes, std::min(size, m_piece), m_client.m_read);
            m_client.m_read += count;
            return count;
        }
        bool Write(std::string_view lines) override {
            std::unique_lock lock(m_client.m_mutex);
            m_client.m_changed.wait(lock, [this] { return !m_client.m_isAsleep || m_client.m_hasEnded; });
            if (m_client.m_isGone) return false;
            for (std::size_t end = 0; (end = lines.find('\n')) != std::string_view::npos;
                 lines.remove_prefix(end + 1))
                m_client.m_answers.push_back(json::parse(lines.substr(0, end)));
            m_client.m_changed.notify_all();
            return true;
        }
        bool IsGone() override {
            const std::lock_guard lock(m_client.m_mutex);
            return m_client.m_isGone;
        }
        void Stop() override { m_client.End(); }

    private:
        FakeClient& m_client;
        std::size_t m_piece;
    };

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_said;
    std::size_t m_read = 0;  // of what it said
    std::vector<json> m_answers;
    bool m_hasEnded = false, m_isGone = false, m_isAsleep = false;
};

std::string Line(const json& request) { return request.dump() + '\n'; }

std::string Call(const json& id, const std::string& method, const json& parameters) {
    return Line({{"id", id}, {"method", method}, {"parameters", parameters}});
}

/// A host and a session with one client, which ends with the test.
class ServedClient : public TempDirTest {
protected:
    void Start(std::size_t piece = 7) {
        m_session = std::make_shared<Session>(host, pool, client.MakeChannel(piece));
        m_thread = std::thread([this] { m_session->Run(); });
    }
    void Finish() {
        client.End();
        if (m_thread.joinable()) m_thread.join();
    }
    ~ServedClient() override { Finish(); }

    /// A command that runs for a minute, or until the test ends.
    std::string LongCommand() const {
        return ChildCommand("await", {dir.Native("started").string(), dir.Native("never").string()});
    }

    FakeClient client;
    Host host{{}, dir.Path("Stores")};
    CallPool pool{4};

private:
    std::shared_ptr<Session> m_session;
    std::thread m_thread;
};

json FindAnswer(const std::vector<json>& answers, const json& id) {
    for (const json& answer : answers) {
        if (answer["id"] == id) return answer;
    }
    return nullptr;
}

}  // namespace

TEST(LineSplitter, CutsLinesOfAnyPiecesAndDropsThoseThatAreTooLong) {
    const std::string text = "one\r\n\ntoo long\r\n12345\r\n123456\nrest";
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
        SCOPED_TRACE(piece);
        LineSplitter splitter(5);
        LineSplitter::Line line;
        std::vector<std::string> lines;
        const auto keep = [&] { lines.push_back(line.isTooLong ? "(too long)" : std::string(line.text)); };
        for (std::size_t at = 0; at < text.size(); at += piece) {
            std::string_view bytes = std::string_view(text).substr(at, piece);
            while (splitter.Next(bytes, line)) keep();
        }
        if (splitter.Rest(line)) keep();
        EXPECT_THAT(lines, testing::ElementsAre("one", "", "(too long)", "12345", "(too long)", "rest"));
        EXPECT_FALSE(splitter.Rest(line));
    }
}

TEST_F(ServedClient, GetsAnAnswerForEachLineWhateverItHolds) {
    const std::tuple<const char*, const char*, int, const char*> cases[] = {
        {"no JSON", "{\"id\"", 2, "The line is not JSON: parse error at line 1"},
        {"not UTF-8", "{\"id\":\"\xFF\"}", 2, "The line is not JSON"},
        {"no object", "[1]", 2, "The line must be a JSON object"},
        {"other member", R"({"id":1,"methd":"System.Echo"})", 2, "'methd' is no member of a request"},
        {"no method", R"({"id":1})", 2, "either a 'method' or a 'cancel'"},
        {"id of another type", R"({"id":1.5,"method":"System.Echo"})", 2,
         "'id' must be a text or an integer"},
        {"unknown method", R"({"id":1,"method":"System.No\u001b[2J"})", 2,
         "Unknown method 'System.No\\x1B[2J'"},
        {"large integer", R"({"method":"System.Echo","parameters":{"integer":9223372036854775808}})", 2,
         "Parameter 'integer' must be at most 9223372036854775807"},
        {"large number", R"({"method":"System.Echo","parameters":{"float":10000000000000000000}})", 0, ""},
        {"object", R"({"method":"System.Echo","parameters":{"text":{}}})", 2, "must be a scalar or an array"},
        {"no table", R"({"method":"System.Echo","parameters":{"table":[[1]]}})", 2, "'table' is no table"},
        {"name with a value",
         R"({"method":"Network.Cidr","parameters":{"address=10.1.2.3":"x","mask":"255.0.0.0"}})", 2,
         "'address'"},
        {"missing beside an unreadable one", R"({"method":"Network.Cidr","parameters":{"address":{},"x":1}})",
         2, "array of objects; Missing parameter 'mask'; Undefined parameter named 'x'"},
        {"NUL in a host", R"({"method":"Network.Resolve","parameters":{"host":"localhost\u0000.x"}})", 2,
         "must have no zero byte"},
        {"NUL in a channel", R"({"method":"EventLog.Query","parameters":{"channel":"Quillon\u0000x"}})", 3,
         "(87/0X57)"},
        {"NUL in a query",
         R"({"method":"EventLog.Follow","parameters":{"channel":"Quillon","query":"*\u0000x","seconds":1}})",
         3, kWindows ? "Channel 'Quillon' cannot be enabled" : "(87/0X57)"},  // Wine has no channels
        {"nobody's call", R"({"id":1,"cancel":7})", 2, "There is no call with this id"},
        {"good", R"({"id":"é","method":"System.Echo","parameters":{"integer":"5","text":null}})", 0, ""},
    };
    Start();
    std::size_t count = 0;
    client.Say(" \n\r\n");  // blank lines are no requests
    for (const auto& [what, line, code, message] : cases) {
        SCOPED_TRACE(what);
        client.Say(std::string(line) + '\n');
        const auto answers = client.Answers(++count);
        ASSERT_THAT(answers, SizeIs(count));
        EXPECT_EQ(answers.back()["code"], code);
        EXPECT_THAT(answers.back()["message"].get<std::string>(), HasSubstr(message));
    }
    const json last = client.Answers(count).back();
    EXPECT_EQ(last["id"], "é");
    EXPECT_EQ(last["table"], json::parse(R"([{"Name":"integer","Type":"integer","Value":"5"}])"));
}

TEST_F(ServedClient, HasItsOtherCallsAnsweredBesideALongLine) {
    Start(1 << 16);
    client.Say(std::string(3 * Session::kLongestLine, 'x'));
    client.Say('\n' + Call(1, "System.Echo", {{"text", "after"}}));
    const auto answers = client.Answers(2);
    ASSERT_THAT(answers, SizeIs(2));
    EXPECT_THAT(answers[0]["message"].get<std::string>(), HasSubstr("A line is longer than 1048576 bytes"));
    EXPECT_EQ(answers[1]["table"][0]["Value"], "after");
}

TEST_F(ServedClient, GetsEveryAnswerOnceThoughMoreCallsWaitThanThereIsRoom) {
    constexpr int kCalls = 3 * static_cast<int>(Session::kMostWaiting);
    Start(1 << 16);
    std::string lines;
    for (int i = 0; i < kCalls; ++i) lines += Call(i, "System.Echo", {{"integer", i}});
    client.Say(lines);
    Finish();  // the end of the input does not take the answers away
    const auto answers = client.Answers(kCalls);
    ASSERT_THAT(answers, SizeIs(kCalls));
    std::vector<bool> isSeen(kCalls);
    for (const json& answer : answers) {
        const int id = answer["id"];
        EXPECT_EQ(answer["table"][0]["Value"], std::to_string(id));
        EXPECT_FALSE(isSeen[static_cast<std::size_t>(id)]);
        isSeen[static_cast<std::size_t>(id)] = true;
    }
}

/// Its answers are more than may wait for it. The calls of both are run in turn.
TEST_F(ServedClient, HoldsNoThreadOfOthersWhileItTakesNoAnswers) {
    constexpr std::size_t kCalls = 40;
    Start(1 << 16);
    client.Sleep(true);
    FakeClient other;
    const auto session = std::make_shared<Session>(host, pool, other.MakeChannel(1 << 16));
    std::thread thread([&] { session->Run(); });
    const std::string text(Session::kLongestLine - 1000, 'x');
    for (std::size_t i = 0; i < kCalls; ++i) {
        client.Say(Call(i, "System.Echo", {{"text", text}}));
        other.Say(Call(i, "System.Echo", {{"integer", i}}));
    }
    EXPECT_THAT(other.Answers(kCalls), SizeIs(kCalls));
    client.Sleep(false);
    EXPECT_THAT(client.Answers(kCalls), SizeIs(kCalls));
    other.End();
    thread.join();
}

TEST_F(ServedClient, EndsOneCallByItsIdAndNoOther) {
    Start();
    client.Say(Call("long", "Commands.Run", {{"command", LongCommand()}}));
    client.Say(Call("long", "System.Echo", json::object()));
    auto answers = client.Answers(1);
    ASSERT_THAT(answers, SizeIs(1));
    EXPECT_EQ(answers[0]["message"], "A call with this id is not answered yet");
    client.Say(Call("beside", "System.Echo", {{"text", "lives"}}));
    EXPECT_EQ(FindAnswer(client.Answers(2), "beside")["code"], 0);
    client.Say(Line({{"id", "c"}, {"cancel", "long"}}));
    answers = client.Answers(4);
    ASSERT_THAT(answers, SizeIs(4));
    EXPECT_EQ(FindAnswer(answers, "c")["code"], 0);
    client.Say(Call("long", "System.Echo", {{"text", "again"}}));
    answers = client.Answers(5);
    ASSERT_THAT(answers, SizeIs(5));
    EXPECT_EQ(answers[4]["code"], 0) << answers[4];  // the id is free with its answer
}

TEST_F(ServedClient, HasItsCallsEndedWhenItIsGone) {
    Start();
    client.Say(Call(1, "Commands.Run", {{"command", LongCommand()}}));
    client.Hang(true);
    client.Say("x\n");  // an answer that cannot be written
    Finish();           // or this would wait for the command's minute
}

/// Their number is more than may wait, so that no more is read when the client goes.
TEST_F(ServedClient, HasItsCallsEndedWhenItIsGoneWithoutAnAnswer) {
    Start(1 << 16);
    std::string lines;
    for (std::size_t i = 0; i < 2 * Session::kMostWaiting; ++i)
        lines += Call(i, "Commands.Run", {{"command", LongCommand()}});
    client.Say(lines);
    AwaitFile(dir.Native("started"));
    client.Hang(true);
    Finish();
}

TEST_F(TempDirTest, AgentServesItsStandardStreams) {
    const std::string requests = Call(1, "System.Echo", {{"text", "5"}}) + Call(2, "No.Such", json::object());
    dir.Write("requests", requests.substr(0, requests.size() - 1));  // the last line has no end
    const std::string line =
        AgentCommand({"serve", "--parallel", "1"}).Get() + " < \"" + dir.Native("requests").string() + '"';
    const AgentRun run = RunLine("cmd /c \"" + line + '"');
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(
        run.output,
        HasSubstr(R"({"id":1,"code":0,"message":"","table":[{"Name":"text","Type":"string","Value":"5"}]})"));
    EXPECT_THAT(run.output,
                HasSubstr(R"({"id":2,"code":2,"message":"Unknown method 'No.Such'","table":null})"));
}

/// For Linux: the shell of Windows opens no directory.
TEST_F(TempDirTest, AgentThatCannotReadItsStandardInputFails) {
    if (kWindows) GTEST_SKIP() << "needs a file that can be opened but not read";
    const std::string line = AgentCommand({"serve"}).Get() + " 2>&1 < \"" + dir.Native().string() + '"';
    const AgentRun run = RunLine("cmd /c \"" + line + '"');
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, testing::ContainsRegex("ERROR.* Standard input cannot be read: .*directory"));
}

}  // namespace quillon::test
