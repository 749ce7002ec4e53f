#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Target.h"

// Runs one fuzz target on each file of a directory; a fault ends the program.
//   quillon_fuzz_seeds CertificateFuzz corpus/Certificate

namespace {

const FuzzTarget* Find(std::string_view name) {
    const FuzzTarget* target = kFuzzTargets;
    while (target->name != nullptr && target->name != name) ++target;
    return target->name != nullptr ? target : nullptr;
}

std::vector<std::filesystem::path> FilesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    std::vector<std::filesystem::path> files(begin(entries), end(entries));
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    const FuzzTarget* const target = argc == 3 ? Find(argv[1]) : nullptr;
    if (target == nullptr) {
        std::fputs("One of the fuzz targets and a directory are needed.\n", stderr);
        return 2;
    }
    const std::vector<std::filesystem::path> files = FilesOf(argv[2]);
    for (const auto& file : files) {
        std::puts(file.filename().c_str());  // the last one is the one that failed
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string input(std::istreambuf_iterator<char>(stream), {});
        target->run(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    return files.empty() ? 1 : 0;
}
