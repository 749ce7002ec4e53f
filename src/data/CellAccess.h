#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "data/HeldName.h"
#include "quillon/VariantList.h"
#include "quillon/detail/RowMemory.h"

namespace quillon {

enum class CellKind : std::uint8_t { Null, Text, Integer, Boolean, Double, Time };

/// What the other files of the data model know of a cell beyond its interface.
struct CellAccess {
    using SharedName = detail::SharedName;

    static CellKind KindOf(const Variant& cell) noexcept {
        constexpr int kLastNull = static_cast<int>(Variant::Kind::Null);
        const int kind = static_cast<int>(cell.HeldKind()) - kLastNull;
        return static_cast<CellKind>(kind > 0 ? kind : 0);
    }
    static bool Equal(const Variant& left, const Variant& right) noexcept {
        if (left.m_head != right.m_head) {  // kinds of nulls count as one, and a name may be there twice
            if (KindOf(left) != KindOf(right)) return false;
            if (!SameName(left, right)) return false;
        }
        return left.EqualValue(right);
    }
    static SharedName* NameOf(const Variant& cell) noexcept { return cell.Name(); }
    static bool SameName(const Variant& left, const Variant& right) noexcept {
        return left.Name() == right.Name() || detail::EqualTexts(left.GetName(), right.GetName());
    }
    static std::size_t NameHash(const Variant& cell) noexcept {
        return cell.Name() != nullptr ? cell.Name()->hash : 0;
    }

    /// Frees the value of a cell that ends without its destructor. Returns the bytes of the cell and,
    /// beside it, of its text.
    static std::size_t FreeValue(Variant& cell) noexcept {
        if (cell.HeldKind() != Variant::Kind::Text) return sizeof(Variant);
        std::string& text = cell.m_value.text;
        const std::size_t beside = text.size() > sizeof(std::string) / 2 ? text.capacity() : 0;
        text.~basic_string();
        return sizeof(Variant) + beside;
    }

    /// Append a cell under a name.
    static void AddNull(VariantList& row, HeldName& name) { Append(row, name, Variant::Kind::NullInteger); }
    static void AddText(VariantList& row, HeldName& name, std::string&& text) {
        new (&Append(row, name, Variant::Kind::Text).m_value.text) std::string(std::move(text));
    }
    static void AddText(VariantList& row, HeldName& name, std::string_view text) {
        if (row.IsFull()) row.Grow();
        Variant* const cell = new (row.end()) Variant(nullptr, Variant::Kind::Null);
        new (&cell->m_value.text) std::string(text);  // first, as it may throw
        cell->m_head =
            reinterpret_cast<std::uintptr_t>(name.Use()) | static_cast<std::uintptr_t>(Variant::Kind::Text);
        ++row.m_block->size;
    }
    static void AddInteger(VariantList& row, HeldName& name, long long value) {
        Append(row, name, Variant::Kind::Integer).m_value.integer = value;
    }
    static void AddBoolean(VariantList& row, HeldName& name, bool value) {
        Append(row, name, Variant::Kind::Boolean).m_value.boolean = value;
    }
    static void AddDouble(VariantList& row, HeldName& name, double value) {
        Append(row, name, Variant::Kind::Double).m_value.real = value;
    }

    /// Makes a copy of a cell that does not count its use of the name yet.
    static void CopyUncounted(const Variant& cell, Variant* target) {
        Variant* const made = new (target) Variant(nullptr, cell.HeldKind());
        made->CopyValue(cell);
        made->m_head = cell.m_head;
    }
    /// Gives an empty row of a table room for so many cells.
    static void GiveBlock(VariantList& row, std::size_t capacity, detail::RowMemory& memory) {
        using Block = VariantList::Block;
        const auto piece = memory.Take(sizeof(Block) + capacity * sizeof(Variant));
        if (piece.memory == nullptr) return row.Reserve(capacity);
        Block* const block = new (piece.memory) Block;
        block->capacity = static_cast<std::uint32_t>(capacity);
        block->chunkOffset = piece.offset;
        row.m_block.reset(block);
    }
    /// Gives back the room that the row was given last and has not used.
    static void FitBlock(VariantList& row, detail::RowMemory& memory) noexcept {
        VariantList::Block& block = *row.m_block;
        if (block.size == block.capacity) return;
        if (block.chunkOffset == 0) {
            if (block.size < block.capacity / 2) row.MoveOut();
            return;
        }
        memory.TakeBack(block.Cells() + block.capacity, (block.capacity - block.size) * sizeof(Variant));
        block.capacity = block.size;
    }
    /// Frees the room of cells that have ended.
    static void FreeBlock(VariantList& row, detail::RowMemory& memory) noexcept {
        if (!row.m_block) return;
        row.m_block->size = 0;
        const std::uint32_t offset = row.m_block->chunkOffset;
        if (offset == 0) return row.m_block.reset();
        memory.CountFreed(detail::RowChunk::Of(row.m_block.release(), offset));
    }
    static void CopyTo(VariantList& made, const VariantList& row, detail::RowMemory& memory) {
        if (row.Size() == 0) return;
        GiveBlock(made, row.Size(), memory);
        for (const Variant& cell : row) {
            new (made.end()) Variant(cell);
            CountElement(made);
        }
    }
    static void MoveTo(VariantList& made, VariantList& row, detail::RowMemory& memory) {
        if (row.Size() == 0) return;
        GiveBlock(made, row.Size(), memory);
        std::uninitialized_move_n(row.begin(), row.Size(), made.begin());
        made.m_block->size = std::exchange(row.m_block->size, 0);  // what is left of the cells needs no end
        row.m_block.reset();
    }
    /// Renames a cell of the row and moves it to the end; it needs no memory.
    static void RenameToEnd(VariantList& row, Variant* cell, HeldName& name) noexcept {
        SharedName* const former = cell->Name();
        cell->m_head =
            reinterpret_cast<std::uintptr_t>(name.Use()) | static_cast<std::uintptr_t>(cell->HeldKind());
        detail::DropUses(former);
        std::rotate(cell, cell + 1, row.end());
        row.m_block->cursor = std::numeric_limits<std::uint32_t>::max();  // as after a removal
    }
    /// Counts an element that was made at the end.
    static void CountElement(VariantList& list) noexcept { ++list.m_block->size; }

private:
    static Variant& Append(VariantList& row, HeldName& name, Variant::Kind kind) {
        if (row.IsFull()) row.Grow();
        Variant* const cell = new (row.end()) Variant(name.Use(), kind);
        ++row.m_block->size;
        return *cell;
    }
};

/// Compares with a value of the same kind.
inline bool Variant::EqualValue(const Variant& other) const noexcept {
    switch (HeldKind()) {
        case Kind::Text:
            return detail::EqualTexts(m_value.text, other.m_value.text);
        case Kind::Integer:
            return m_value.integer == other.m_value.integer;
        case Kind::Boolean:
            return m_value.boolean == other.m_value.boolean;
        case Kind::Double:
            return m_value.real == other.m_value.real;
        case Kind::Time:
            return m_value.time == other.m_value.time;
        default:
            return true;  // nulls
    }
}

inline CellKind KindOf(const Variant& cell) noexcept { return CellAccess::KindOf(cell); }

/// Where the values of a kind stand in a sorted column; both kinds of numbers stand together.
inline int OrderOf(CellKind kind) noexcept {
    constexpr int kOrders[] = {0, 3, 2, 1, 2, 4};
    return kOrders[static_cast<std::size_t>(kind)];
}

}  // namespace quillon
