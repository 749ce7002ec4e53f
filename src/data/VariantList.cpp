#include "quillon/VariantList.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/TextOrEmpty.h"
#include "data/CellAccess.h"
#include "data/DumpWriter.h"
#include "data/NameCache.h"
#include "data/SimilarCells.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RowMemory.h"

namespace quillon {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

}  // namespace

VariantList::VariantList() = default;
VariantList::VariantList(const Variant& v1) { AddAll({&v1}); }
VariantList::VariantList(const Variant& v1, const Variant& v2) { AddAll({&v1, &v2}); }
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3) { AddAll({&v1, &v2, &v3}); }
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4) {
    AddAll({&v1, &v2, &v3, &v4});
}
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                         const Variant& v5) {
    AddAll({&v1, &v2, &v3, &v4, &v5});
}
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                         const Variant& v5, const Variant& v6) {
    AddAll({&v1, &v2, &v3, &v4, &v5, &v6});
}
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                         const Variant& v5, const Variant& v6, const Variant& v7) {
    AddAll({&v1, &v2, &v3, &v4, &v5, &v6, &v7});
}
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                         const Variant& v5, const Variant& v6, const Variant& v7, const Variant& v8) {
    AddAll({&v1, &v2, &v3, &v4, &v5, &v6, &v7, &v8});
}
VariantList::VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                         const Variant& v5, const Variant& v6, const Variant& v7, const Variant& v8,
                         const Variant& v9) {
    AddAll({&v1, &v2, &v3, &v4, &v5, &v6, &v7, &v8, &v9});
}

VariantList::VariantList(std::initializer_list<Variant> values) {
    Reserve(values.size());
    for (const Variant& value : values) Add(value);
}

VariantList::VariantList(const VariantList& other) : m_block(CopyOf(other)) {}

VariantList& VariantList::operator=(const VariantList& other) {
    if (this != &other) *this = VariantList(other);
    return *this;
}

VariantList::BlockOwner VariantList::Allocate(std::size_t capacity) {
    if (capacity > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("too many elements");
    static_assert(sizeof(Block) % alignof(Variant) == 0);
    BlockOwner block(new (::operator new(sizeof(Block) + capacity * sizeof(Variant))) Block);
    block->capacity = static_cast<std::uint32_t>(capacity);
    return block;
}

void VariantList::Delete(Block* block) noexcept {
    std::destroy_n(block->Cells(), block->size);
    if (block->chunkOffset != 0) {
        detail::RowChunk::Drop(detail::RowChunk::Of(block, block->chunkOffset), 1);
    } else {
        ::operator delete(block);  // without its size, which clang 14 does not take by default
    }
}

VariantList::BlockOwner VariantList::CopyOf(const VariantList& other) {
    if (other.Size() == 0) return nullptr;
    BlockOwner block = Allocate(other.Size());
    for (const Variant& cell : other) {
        new (block->Cells() + block->size) Variant(cell);
        ++block->size;
    }
    return block;
}

void VariantList::Reserve(std::size_t count) {
    if (m_block ? count <= m_block->capacity : count == 0) return;
    MoveTo(Allocate(count));
}

void VariantList::MoveTo(BlockOwner block) noexcept {
    if (m_block) {
        std::uninitialized_move_n(m_block->Cells(), m_block->size, block->Cells());
        block->size = m_block->size;
        block->cursor = m_block->cursor;
    }
    m_block = std::move(block);
}

void VariantList::MoveOut() noexcept {
    try {
        MoveTo(Allocate(m_block->size));
    } catch (const std::bad_alloc&) {
    }
}

void VariantList::Grow() {
    const std::size_t capacity = m_block ? m_block->capacity : 0;
    Reserve(capacity == 0 ? UsualRowSize() : std::max<std::size_t>(2 * capacity, 4));
}

template <class... Arguments>
void VariantList::Emplace(Arguments&&... arguments) {
    if (IsFull()) {
        Variant made(std::forward<Arguments>(arguments)...);
        Grow();
        new (end()) Variant(std::move(made));
    } else {
        new (end()) Variant(std::forward<Arguments>(arguments)...);
    }
    ++m_block->size;
}

void VariantList::Add(const Variant& value) { Emplace(value); }
void VariantList::Add(Variant&& value) { Emplace(std::move(value)); }
void VariantList::Add(const Variant* value) { Add(*value); }
void VariantList::Add(const std::string& name, const char* value) { Add(name, base::TextOrEmpty(value)); }
void VariantList::Add(const std::string& name, const std::string& value) {
    Add(name, std::string_view(value));
}
void VariantList::Add(const std::string& name, std::string_view value) { Emplace(name, value); }
void VariantList::Add(const std::string& name, std::string&& value) { Emplace(name, std::move(value)); }
void VariantList::Add(const std::string& name, long long value) { Emplace(name, value); }
void VariantList::Add(const std::string& name, bool value) { Emplace(name, value); }
void VariantList::Add(const std::string& name, double value) { Emplace(name, value); }
void VariantList::AddEmptyCell(const std::string& name, const std::type_index& type) { Emplace(name, type); }

bool VariantList::Remove(const std::string& name) {
    const Variant* const found = Find(name);
    return found != nullptr && Erase(found);
}

bool VariantList::Remove(const Variant& value) {
    return Erase(std::find(std::as_const(*this).begin(), std::as_const(*this).end(), value));
}

void VariantList::Clear() { m_block.reset(); }

const Variant& VariantList::operator[](int index) const {
    if (index >= 0 && static_cast<std::size_t>(index) < Size()) return begin()[index];
    throw std::invalid_argument("index " + std::to_string(index) + " out of range");
}

void VariantList::ThrowNotPresent(const std::string& name) {
    throw std::invalid_argument("index '" + name + "' not present");
}

const Variant& VariantList::Get(unsigned long long index) const { return (*this)[static_cast<int>(index)]; }
const Variant& VariantList::Get(const std::string& name) const { return (*this)[name]; }
bool VariantList::TypeIs(const std::type_info& type, int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= Size()) {
        throw std::invalid_argument("TypeIs index " + std::to_string(index) + " out of range");
    }
    return (*this)[index].TypeIs(type);
}

Variant* VariantList::GetFirst() {
    if (m_block) m_block->cursor = 0;
    return GetNext();
}

Variant* VariantList::GetNext() {
    if (!m_block || m_block->cursor >= m_block->size) return nullptr;
    return m_block->Cells() + m_block->cursor++;
}

const Variant* VariantList::cGetFirst(const_iterator& position) const {
    position = begin();
    return cGetNext(position);
}

const Variant* VariantList::cGetNext(const_iterator& position) const {
    return position != end() ? &*position++ : nullptr;
}

void VariantList::VisitItems(const std::function<bool(const Variant&)>& visitor) const {
    for (const Variant& element : *this) {
        if (!visitor(element)) return;
    }
}

bool VariantList::operator==(const VariantList& other) const {
    return Size() == other.Size() &&
           std::equal(begin(), end(), other.begin(),
                      [](const Variant& own, const Variant& its) { return CellAccess::Equal(own, its); });
}
bool VariantList::operator!=(const VariantList& other) const { return !(*this == other); }

bool VariantList::Similar(const VariantList& other) const {
    return Size() == other.Size() && AreSimilar({begin(), end()}, {other.begin(), other.end()});
}

bool VariantList::NotSimilar(const VariantList& other) const { return !Similar(other); }

std::string VariantList::ToString(const char* separator, const char* quote) const {
    const std::string_view gap = base::TextOrEmpty(separator), mark = base::TextOrEmpty(quote);
    std::string result;
    for (const Variant& element : *this) {
        if (&element != begin()) result += gap;
        const bool isText = element.TypeIs(typeid(std::string));
        const std::string text = element.AsString();
        const bool quoted = isText && text.find_first_of(kWhiteSpace) != std::string::npos;
        if (quoted) result += mark;
        result += text;
        if (quoted) result += mark;
    }
    return result;
}

std::wstring VariantList::ToWideString(const char* separator, const char* quote) const {
    return StringUtils::NarrowStringToWide(ToString(separator, quote));
}

std::string VariantList::ToDelimitedStrings(char delimiter, char quote, bool optionsUnquoted) const {
    std::string result;
    for (const Variant& element : *this) {
        if (&element != begin()) result += delimiter;
        const std::string text = element.AsString();
        const bool option = optionsUnquoted && element.TypeIs(typeid(std::string)) && text.starts_with('-');
        if (!option) result += quote;
        result += text;
        if (!option) result += quote;
    }
    return result;
}

void VariantList::Dump(const char* title, ICLogger* logger, unsigned int indent) const {
    ICLogger* const target = LoggerOrRegistered(logger);
    const std::string prefix = DumpIndent(indent), shownTitle(base::TextOrEmpty(title));
    WriteDumpLine(target, prefix + "Start of VariantList dump with " + std::to_string(Size()) +
                              " column(s): " + shownTitle);
    for (const Variant& element : *this) element.Dump(target, InnerIndent(indent));
    WriteDumpLine(target, prefix + "End of VariantList dump: " + shownTitle);
}

void VariantList::AddAll(std::initializer_list<const Variant*> values) {
    Reserve(values.size());
    for (const Variant* value : values) Add(*value);
}

bool VariantList::Erase(const_iterator position) {
    if (position == std::as_const(*this).end()) return false;
    Variant* const erased = m_block->Cells() + (position - m_block->Cells());
    std::move(erased + 1, end(), erased);
    std::destroy_at(m_block->Cells() + --m_block->size);
    m_block->cursor = std::numeric_limits<std::uint32_t>::max();
    return true;
}

std::size_t VariantList::Hash() const noexcept {
    std::size_t hash = Size();
    for (const Variant& element : *this) hash = hash * 31 + element.Hash();
    return hash;
}

void PrintTo(const VariantList& list, std::ostream* stream) {
    const char* gap = "";
    *stream << '{';
    for (const Variant& element : list) {
        *stream << gap;
        PrintTo(element, stream);
        gap = ", ";
    }
    *stream << '}';
}

std::ostream& operator<<(std::ostream& stream, const VariantList& list) {
    const char* gap = "";
    stream << '{';
    for (const Variant& element : list) {
        stream << gap << element.GetName() << '=' << element;
        gap = ", ";
    }
    return stream << '}';
}

}  // namespace quillon
