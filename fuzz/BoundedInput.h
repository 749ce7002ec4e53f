#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/// A fuzz input as a file that is read at any offset. Reading more than 512 KiB of it in all is a fault.
class BoundedInput {
public:
    BoundedInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    /// Reads exactly so many bytes; false when there are not as many.
    bool Read(std::uint64_t offset, void* buffer, std::size_t count) {
        if (count > m_left) std::abort();
        m_left -= count;
        if (offset > m_size || count > m_size - offset) return false;
        if (count > 0) std::memcpy(buffer, m_data + offset, count);
        return true;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_left = std::size_t{512} << 10;
};
