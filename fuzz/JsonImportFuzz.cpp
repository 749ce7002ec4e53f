#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "quillon/DataTableIO.h"

/// A table that an import accepts must be written and read back as the same table.

namespace {

using Import = quillon::DataTable (*)(std::string_view);
using Export = std::string (*)(const quillon::DataTable&);

void Require(bool condition) {
    if (!condition) std::abort();
}

/// The first export completes missing cells; from then on nothing may change.
void CheckRoundTrip(const quillon::DataTable& imported, Export write, Import read) {
    const std::string text = write(imported);
    const quillon::DataTable again = read(text);
    Require(write(again) == text);
    Require(read(write(again)) == again);
}

void Check(std::string_view input, Export write, Import read) {
    try {
        const quillon::DataTable table = read(input);
        CheckRoundTrip(table, write, read);
        Require(!quillon::ToText(table).empty() || table.GetColumnNames().empty());
    } catch (const quillon::TableFormatError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    Check(input, quillon::ToJson, quillon::FromJson);
    Check(input, quillon::ToJsonLines, quillon::FromJson);
    Check(input, quillon::ToCsv, quillon::FromCsv);
    return 0;
}
