#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "quillon/ProcessUtils.h"

// The linear matcher against the pattern that it stands for, on texts short enough for
// std::regex. Bytes below 0x20 are replaced by parts of the pattern, so that matches
// and near misses are found soon.
namespace {

const std::regex& Pattern() {
    static const std::regex pattern(
        "([Mm]icrosoft).{0,4}\\s*([Ww]indows).{0,4}\\s*([Oo]perating).{0,4}\\s*([Ss]ystem).{0,4}\\s*");
    return pattern;
}

std::string Expanded(const std::uint8_t* data, std::size_t size) {
    static const char* const parts[] = {"Microsoft", "windows", "Operating", "system", "microsoft",
                                        "Windows",   "System",  "operating", "M",      "Micro"};
    constexpr std::size_t kParts = sizeof parts / sizeof *parts;
    constexpr std::size_t kFirst = 0x0E;  // white space stays
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t part = data[i] - kFirst;
        text += data[i] >= kFirst && part < kParts ? parts[part] : std::string(1, static_cast<char>(data[i]));
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 64) return 0;
    const std::string text = Expanded(data, size);
    if (quillon::ProcessUtils::IsOsProcess(text) != std::regex_search(text, Pattern())) std::abort();
    return 0;
}
