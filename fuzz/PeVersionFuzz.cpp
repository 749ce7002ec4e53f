#include <cstdint>
#include <cstdlib>

#include "BoundedInput.h"
#include "base/PeVersionResource.h"

// The input is a PE file. Whatever it says, only bytes that it has are read, and no
// more of them than some hundred kilobytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    BoundedInput input(data, size);
    const auto read = [&input](std::uint64_t offset, void* buffer, std::size_t count) {
        return input.Read(offset, buffer, count);
    };
    bool isThere = false;
    const auto version = quillon::base::ReadPeVersion(read, isThere);
    if (!version) return 0;
    if (!isThere || version->translations.size() > size / 4) std::abort();
    for (const auto& [key, value] : version->values) {
        if (version->Find(key.first, key.second) != &value || 2 * value.size() > size) std::abort();
    }
    return 0;
}
