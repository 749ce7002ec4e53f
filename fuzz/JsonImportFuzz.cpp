#include <cstddef>
#include <cstdint>

#include "InputLocale.h"
#include "TableRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UseInputLocale(size);
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    CheckRoundTrip(input, quillon::FromJson, quillon::ToJson);
    CheckRoundTrip(input, quillon::FromJson, quillon::ToJsonLines);
    return 0;
}
