#include <cstdint>
#include <cstdlib>

#include "BoundedInput.h"
#include "platform/native/ElfVersionNote.h"

// The input is an ELF file. Whatever its headers say, only bytes that it has are read, and no more of
// them than some hundred kilobytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    BoundedInput input(data, size);
    const auto read = [&input](std::uint64_t offset, void* buffer, std::size_t count) {
        return input.Read(offset, buffer, count);
    };
    const auto version = quillon::platform::ReadElfVersion(read);
    if (!version) return 0;
    for (const auto& [key, value] : version->values) {
        if (version->Find(key.first, key.second) != &value || value.size() > size + 1) std::abort();
    }
    return 0;
}
