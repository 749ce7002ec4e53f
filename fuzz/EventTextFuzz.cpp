#include <cstdint>
#include <string>
#include <string_view>

#include "ExpandedText.h"
#include "Require.h"
#include "simulation/eventlog/EventLog.h"

// The input is the query of a channel and the texts of an event. A query that is read agrees with the number
// that it names, and no text can break out of its element.
namespace {

using namespace quillon::simulation;

constexpr const char* kParts[] = {
    "*[System[", "]]", "EventID", "EventRecordID", "Level", "<=", ">=", "(", ")", " ", "*", "<", "&", "'"};

/// Finds the text between the first `open` and the `close` after it.
std::string_view Between(std::string_view text, std::string_view open, std::string_view close) {
    const std::size_t begin = text.find(open);
    Require(begin != std::string_view::npos);
    text.remove_prefix(begin + open.size());
    const std::size_t end = text.find(close);
    Require(end != std::string_view::npos);
    return text.substr(0, end);
}

std::string Unescaped(std::string_view text) {
    static constexpr struct {
        const char* name;
        char character;
    } kNames[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&apos;", '\''}, {"&quot;", '"'}};
    std::string result;
    while (!text.empty()) {
        Require(text.front() != '<' && text.front() != '>' && text.front() != '\'');
        std::size_t taken = 1;
        char character = text.front();
        for (const auto& [name, stands] : kNames) {
            if (text.starts_with(name)) character = stands, taken = std::string_view(name).size();
        }
        Require(text.front() != '&' || taken > 1);
        result += character;
        text.remove_prefix(taken);
    }
    return result;
}

/// Exactly one of the three relations of two numbers makes a condition true or false.
void CheckQuery(std::string_view text) {
    const auto query = EventQuery::Parse(text);
    if (!query) return;
    Event event;
    int matched = 0;
    for (const int id : {0, 1, 4711, 65535}) {
        event.eventId = static_cast<std::uint16_t>(id);
        event.recordId = static_cast<std::uint64_t>(id);
        event.level = static_cast<std::uint8_t>(id);
        matched += query->Matches(event) ? 1 : 0;
    }
    Require(matched == 4 || (!text.empty() && text != "*"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = quillon::ExpandedText(data, size, kParts);
    const std::size_t cut = text.find('\n');
    CheckQuery(text.substr(0, cut));
    Event event;
    event.provider = text.substr(0, cut);
    event.message = cut == std::string::npos ? text : text.substr(cut + 1);
    event.channel = event.message;
    event.fileTime = size >= 8 ? data[7] * 0x0100'0000'0000'0000ULL / 2 + data[3] : 0;
    const std::string xml = EventXml(event);
    Require(Unescaped(Between(xml, "<Provider Name='", "'/>")) == event.provider);
    Require(Unescaped(Between(xml, "<Channel>", "</Channel>")) == event.channel);
    Require(Unescaped(Between(xml, "<Data>", "</Data>")) == event.message);
    return 0;
}
