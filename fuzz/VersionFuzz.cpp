#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "quillon/Version.h"

namespace {

using quillon::Version;

/// The prescribed reading by the C library, whose long has 64 bits here.
std::string ReadByLibc(const std::string& text, bool& valid) {
    unsigned long parts[4] = {};
    const auto dots = std::count(text.begin(), text.end(), '.');
    valid = dots <= 3 && std::sscanf(text.c_str(), "%lu.%lu.%lu.%lu", &parts[0], &parts[1], &parts[2],
                                     &parts[3]) == dots + 1;
    return Version(parts[0], parts[1], parts[2], parts[3]).to_string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Version version(text);
    bool valid = false;
    if (version.to_string() != ReadByLibc(text, valid) || version.Valid() != valid) std::abort();
    if (Version(version.to_string()) != version) std::abort();
    return 0;
}
