#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// Runs one fuzz target on each file of a directory; a fault ends the program.
//   quillon_fuzz_seeds CertificateFuzz corpus/Certificate

#define TARGET(name) extern "C" int name(const std::uint8_t* data, std::size_t size);
#include "Targets.inc"
#undef TARGET

namespace {

using Target = int (*)(const std::uint8_t*, std::size_t);

Target Find(std::string_view wanted) {
#define TARGET(name) \
    if (wanted == #name) return &name;
#include "Targets.inc"
#undef TARGET
    return nullptr;
}

std::vector<std::filesystem::path> FilesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    std::vector<std::filesystem::path> files(begin(entries), end(entries));
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    const Target target = argc == 3 ? Find(argv[1]) : nullptr;
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
        target(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    return files.empty() ? 1 : 0;
}
