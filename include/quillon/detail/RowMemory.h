#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace quillon::detail {

/// Stands at the beginning of memory that several rows share. Whoever frees a piece counts it; the last
/// one, on whatever thread, frees the chunk.
struct RowChunk {
    std::atomic<std::size_t> uses;
    std::size_t size;  ///< in bytes, with this header

    static RowChunk* Make(std::size_t size);
    static RowChunk* Of(void* piece, std::uint32_t offset) noexcept {
        return reinterpret_cast<RowChunk*>(static_cast<std::byte*>(piece) - offset);
    }
    static void Drop(RowChunk* chunk, std::size_t count) noexcept {
        if (count != 0 && chunk->uses.fetch_sub(count, std::memory_order_acq_rel) == count) Free(chunk);
    }
    static void Free(RowChunk* chunk) noexcept;
};

/// Gives the rows of one table their memory, one after the other from chunks that grow with the table: a
/// call of the heap for each row would cost more than the row. A small table gets no chunk.
class RowMemory {
public:
    /// Memory and how far behind the beginning of its chunk it lies.
    struct Piece {
        void* memory = nullptr;  ///< null: the row takes memory of its own
        std::uint32_t offset = 0;
    };

    RowMemory() = default;
    RowMemory(const RowMemory&) = delete;
    RowMemory& operator=(const RowMemory&) = delete;
    ~RowMemory() { Reset(); }

    /// Returns a piece of a chunk, if the table is large enough for one. Multiples of 8 bytes.
    Piece Take(std::size_t bytes) {
        if (bytes > m_left && !BeginChunk(bytes)) return {};
        const Piece piece{m_next, static_cast<std::uint32_t>(m_next - reinterpret_cast<std::byte*>(m_chunk))};
        m_next += bytes;
        m_left -= bytes;
        ++m_given;
        return piece;
    }
    /// Takes back the end of the piece that was taken last.
    void TakeBack(const void* end, std::size_t bytes) noexcept {
        if (end != m_next) return;
        m_next -= bytes;
        m_left += bytes;
    }
    /// Counts a piece that is free; Settle() gives it back.
    void CountFreed(RowChunk* chunk) noexcept {
        if (m_freedChunk != chunk) {
            Settle();
            m_freedChunk = chunk;
        }
        ++m_freed;
    }
    void Settle() noexcept;
    /// Leaves the chunk to the rows that lie in it, and begins as for an empty table.
    void Reset() noexcept;
    /// Takes over the other's chunk.
    void TakeOver(RowMemory& other) noexcept;

    /// Memory for the place of a row in the list of a table, which remembers its chunk.
    void* TakePlace(std::size_t bytes);
    void FreePlace(void* place) noexcept;

private:
    bool BeginChunk(std::size_t bytes);
    void LeaveChunk() noexcept;

    RowChunk* m_chunk = nullptr;
    std::byte* m_next = nullptr;
    std::size_t m_left = 0;   // bytes behind m_next
    std::size_t m_given = 0;  // pieces of the chunk
    std::size_t m_total = 0;  // bytes taken, those of finished chunks and of the heap
    RowChunk* m_freedChunk = nullptr;
    std::size_t m_freed = 0;  // pieces of that chunk
};

/// Lets a list take the places of its rows from such a memory. All are equal: a row may move to the list of
/// another table, which frees it.
template <class T>
class RowAllocator {
public:
    using value_type = T;
    using is_always_equal = std::true_type;

    explicit RowAllocator(RowMemory& memory) noexcept : m_memory(&memory) {}
    template <class Other>
    RowAllocator(const RowAllocator<Other>& other) noexcept : m_memory(other.m_memory) {}

    T* allocate(std::size_t count) { return static_cast<T*>(m_memory->TakePlace(count * sizeof(T))); }
    void deallocate(T* place, std::size_t) noexcept { m_memory->FreePlace(place); }
    template <class Other>
    bool operator==(const RowAllocator<Other>&) const noexcept {
        return true;
    }

private:
    template <class Other>
    friend class RowAllocator;

    RowMemory* m_memory;
};

}  // namespace quillon::detail
