#include "quillon/detail/RowMemory.h"

#include <algorithm>
#include <new>
#include <utility>

#include "data/RowRegions.h"

namespace quillon::detail {
namespace {

/// Smaller tables take the heap for each row, so that one of a few rows costs no more than these.
constexpr std::size_t kSmallTable = std::size_t{4} << 10;
/// A chunk is at most this share of what the table has already, and a piece this share of a chunk. So a
/// table wastes little at the ends of its chunks.
constexpr std::size_t kChunkShare = 8, kPieceShare = 16;
/// A chunk counts so many uses beforehand. Those that were not given away are taken back when it is full.
constexpr std::size_t kUses = std::size_t{1} << 30;
/// Stands before the place of a row.
constexpr std::size_t kPlaceHead = sizeof(std::size_t);
static_assert(sizeof(RowChunk) == 2 * sizeof(std::size_t));

std::size_t Rounded(std::size_t bytes) { return (bytes + kPlaceHead - 1) / kPlaceHead * kPlaceHead; }

}  // namespace

RowChunk* RowChunk::Make(std::size_t size) {
    void* memory = size == kRegionSlot ? TakeRegionSlot() : nullptr;
    const bool isSlot = memory != nullptr;
    if (!isSlot) memory = ::operator new(size);
    // One byte more than a slot has tells the memory of the heap.
    return new (memory) RowChunk{{kUses}, isSlot || size != kRegionSlot ? size : size + 1};
}

void RowChunk::Free(RowChunk* chunk) noexcept {
    if (chunk->size == kRegionSlot) {
        FreeRegionSlot(chunk);
    } else {
        ::operator delete(chunk);
    }
}

bool RowMemory::BeginChunk(std::size_t bytes) {
    const std::size_t all = m_total + (m_chunk != nullptr ? m_chunk->size : 0);
    const std::size_t size = std::min(Rounded(all / kChunkShare), kRegionSlot);
    if (all < kSmallTable || bytes > size / kPieceShare) {
        m_total += bytes;
        return false;
    }
    RowChunk* const chunk = RowChunk::Make(size);
    LeaveChunk();
    m_total = all;
    m_chunk = chunk;
    m_next = reinterpret_cast<std::byte*>(chunk + 1);
    m_left = size - sizeof(RowChunk);
    return true;
}

void RowMemory::LeaveChunk() noexcept {
    if (m_chunk != nullptr) RowChunk::Drop(m_chunk, kUses - m_given);
    m_chunk = nullptr;
    m_next = nullptr;
    m_left = m_given = 0;
}

void RowMemory::Settle() noexcept {
    if (m_freedChunk != nullptr) RowChunk::Drop(m_freedChunk, m_freed);
    m_freedChunk = nullptr;
    m_freed = 0;
}

void RowMemory::Reset() noexcept {
    Settle();
    LeaveChunk();
    m_total = 0;
}

void RowMemory::TakeOver(RowMemory& other) noexcept {
    Reset();
    other.Settle();
    m_chunk = std::exchange(other.m_chunk, nullptr);
    m_next = std::exchange(other.m_next, nullptr);
    m_left = std::exchange(other.m_left, 0);
    m_given = std::exchange(other.m_given, 0);
    m_total = std::exchange(other.m_total, 0);
}

void* RowMemory::TakePlace(std::size_t bytes) {
    Piece piece = Take(bytes + kPlaceHead);
    if (piece.memory == nullptr) piece.memory = ::operator new(bytes + kPlaceHead);
    new (piece.memory) std::size_t(piece.offset);
    return static_cast<std::byte*>(piece.memory) + kPlaceHead;
}

void RowMemory::FreePlace(void* place) noexcept {
    void* const memory = static_cast<std::byte*>(place) - kPlaceHead;
    const auto offset = static_cast<std::uint32_t>(*static_cast<std::size_t*>(memory));
    if (offset == 0) {
        ::operator delete(memory);
    } else {
        CountFreed(RowChunk::Of(memory, offset));
    }
}

}  // namespace quillon::detail
