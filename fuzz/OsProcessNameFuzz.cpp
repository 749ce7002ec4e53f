#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "ExpandedText.h"
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

constexpr const char* kParts[] = {"Microsoft", "windows", "Operating", "system", "microsoft",
                                  "Windows",   "System",  "operating", "M",      "Micro"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 64) return 0;
    const std::string text = quillon::ExpandedText(data, size, kParts);
    if (quillon::ProcessUtils::IsOsProcess(text) != std::regex_search(text, Pattern())) std::abort();
    return 0;
}
