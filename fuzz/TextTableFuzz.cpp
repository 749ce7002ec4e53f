#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "quillon/TextToDataTableParser.h"

// Fields that are read in place give the same table as fields of a class of the
// caller's own, which get a copy of each line; integers are the C library's.

namespace {

using quillon::DataTable;
using quillon::IParsableField;
using quillon::TextToDataTableParser;

/// Reads by another field, so that the parser cannot know how far it reaches.
class Foreign final : public IParsableField {
public:
    explicit Foreign(IParsableField* field) : m_field(field) {}
    bool Parse(const char** cursor, std::string& value) override { return m_field->Parse(cursor, value); }

private:
    std::unique_ptr<IParsableField> m_field;
};

IParsableField* Word(bool foreign) {
    IParsableField* field = new quillon::SpaceSeparatedField;
    return foreign ? new Foreign(field) : field;
}

DataTable Parsed(const std::string& text, bool foreign, long long multiplier) {
    TextToDataTableParser parser;
    parser.AddField<std::string>("text", Word(foreign), 0);
    parser.AddField<long long>("number", Word(foreign), multiplier);
    parser.AddField<bool>("flag", Word(foreign), 0);
    parser.AddField<std::string>("rest", new quillon::NullSeparatedField, 0);
    DataTable table;
    parser.Parse(text, table);
    return table;
}

/// The number of every row is the one that strtoll finds in the line's only word.
void CheckNumbers(const std::string& text) {
    TextToDataTableParser numbers, words;
    numbers.AddField<long long>("v", new quillon::SpaceSeparatedField, 0);
    words.AddField<std::string>("v", new quillon::SpaceSeparatedField, 0);
    DataTable found, expected;
    numbers.Parse(text, found);
    words.Parse(text, expected);
    auto word = expected.begin();
    for (const quillon::VariantList& row : found) {
        if (row[0].GetLongLongValue() != std::strtoll((*word)[0].GetStringValue().c_str(), nullptr, 10)) {
            std::abort();
        }
        ++word;
    }
    if (word != expected.end()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const long long multiplier = static_cast<std::int8_t>(data[0]) * (1LL << (data[0] % 56));
    if (!Parsed(text, false, multiplier).ContentEqual(Parsed(text, true, multiplier))) std::abort();
    CheckNumbers(text);
    return 0;
}
