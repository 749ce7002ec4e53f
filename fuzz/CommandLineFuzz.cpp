#include <cstdint>
#include <cstdlib>
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

bool IsBatchFile(std::string program) {
    program.erase(program.find_last_not_of(" .") + 1);
    return StringUtils::EndsWith(program, ".bat", false) || StringUtils::EndsWith(program, ".cmd", false);
}

void RoundTrip(const std::vector<std::string>& arguments) {
    const std::string& program = arguments.front();
    if (program.find('"') != std::string::npos || IsBatchFile(program)) return;
    CommandLineBuilder builder(program);
    for (std::size_t i = 1; i < arguments.size(); ++i) builder.Add(arguments[i]);
    if (base::SplitCommandLine(builder.Get()) != arguments) std::abort();
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
