#include <cstddef>
#include <cstdint>

#include "InputLocale.h"
#include "TableRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UseInputLocale(size);
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto check = [input](const quillon::CsvOptions& options) {
        CheckRoundTrip(
            input, [&](std::string_view text) { return quillon::FromCsv(text, options); },
            [&](const quillon::DataTable& table) { return quillon::ToCsv(table, options); });
    };
    static const quillon::CsvOptions plain, typed = [] {
        quillon::CsvOptions options;
        options.separator = ';';
        options.skipTrailingBlankLines = true;
        options.types = {{"integer", 0}, {"real", 0.0}, {"flag", false}};
        return options;
    }();
    check(plain);
    check(typed);
    return 0;
}
