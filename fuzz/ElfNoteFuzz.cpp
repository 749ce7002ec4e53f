#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/native/ElfVersionNote.h"

// The input is an ELF file. Whatever its headers say, only bytes that it has are read, and no more of
// them than some hundred kilobytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::size_t left = std::size_t{512} << 10;
    const auto read = [&](std::uint64_t offset, void* buffer, std::size_t count) {
        if (count > left) std::abort();
        left -= count;
        if (offset > size || count > size - offset) return false;
        if (count > 0) std::memcpy(buffer, data + offset, count);
        return true;
    };
    const auto version = quillon::platform::ReadElfVersion(read);
    if (!version) return 0;
    for (const auto& [key, value] : version->values) {
        if (version->Find(key.first, key.second) != &value || value.size() > size + 1) std::abort();
    }
    return 0;
}
