#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/CommandLine.h"
#include "quillon/CommandLineBuilder.h"
#include "quillon/StringUtils.h"

// The input is a program and its arguments, one after each line feed. What the
// builder makes of them splits into the same again; and any line, split and built
// anew, keeps its meaning.
namespace {

using namespace quillon;

void RoundTrip(const std::vector<std::string>& arguments) {
    std::string line;
    try {
        CommandLineBuilder builder(arguments.front());
        for (std::size_t i = 1; i < arguments.size(); ++i) builder.Add(arguments[i]);
        line = builder.Get();
    } catch (const std::invalid_argument&) {
        return;  // no quoting carries it
    }
    if (base::SplitCommandLine(line) != arguments) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    std::erase(text, '\0');
    std::vector<std::string> arguments;
    StringUtils::SplitByChar(text, '\n', arguments);
    RoundTrip(arguments);
    if (!text.empty()) RoundTrip(base::SplitCommandLine(text));
    return 0;
}
