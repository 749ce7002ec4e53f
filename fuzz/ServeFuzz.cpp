#include <cstdint>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "Require.h"
#include "quillon/PathUtils.h"
#include "quillon/TemporaryFile.h"
#include "serve/Session.h"

// The input is what a client says, after a byte that tells in what pieces. Every line has one answer, which
// is an object with the four members, and the session ends when the client does.
namespace {

using namespace quillon;

class Client final : public agent::Channel {
public:
    Client(std::string_view said, std::size_t piece, std::string& answers)
        : m_said(said), m_piece(piece), m_answers(answers) {}

    std::size_t Read(char* bytes, std::size_t size) override {
        const std::size_t count = m_said.copy(bytes, std::min(size, m_piece));
        m_said.remove_prefix(count);
        return count;
    }
    bool Write(std::string_view bytes) override {
        m_answers += bytes;
        return true;
    }
    bool IsGone() override { return false; }
    void Stop() override {}

private:
    std::string_view m_said;
    const std::size_t m_piece;
    std::string& m_answers;
};

/// Methods that neither run a program nor change a file.
bool IsHarmless(std::string_view text) {
    for (const char* const part : {"Commands", "Store", "Content", "Update", "Invoke", "Follow", "Hold",
                                   "Files", "Certificates", "Resolve", "\\u"}) {
        if (text.find(part) != std::string_view::npos) return false;
    }
    return true;
}

std::size_t LinesIn(std::string_view text) {
    std::size_t lines = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.find_first_not_of(" \t") != std::string_view::npos) ++lines;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void CheckAnswers(std::string_view answers, std::size_t expected) {
    Require(answers.empty() || answers.back() == '\n');
    std::size_t count = 0;
    for (; !answers.empty(); ++count) {
        const std::size_t end = answers.find('\n');
        const auto answer = nlohmann::json::parse(answers.substr(0, end));
        Require(answer.size() == 4 && answer.contains("id") && answer.contains("table"));
        Require(answer["code"].is_number_integer() && answer["message"].is_string());
        Require(answer["code"] == 0 || answer["message"] != "");
        answers.remove_prefix(end + 1);
    }
    Require(count == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryDirectory folder;
    static const agent::Host host({.file = {}, .level = ICLogger::Level::Fatal}, folder.Path());
    static agent::CallPool pool(2);
    if (size == 0) return 0;
    const std::string_view said(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (!IsHarmless(said)) return 0;
    std::string answers;
    std::make_shared<agent::Session>(host, pool, std::make_unique<Client>(said, 1U + data[0], answers))
        ->Run();
    CheckAnswers(answers, LinesIn(said));
    return 0;
}
