#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeindex>
#include <typeinfo>
#include <utility>

#include "quillon/Export.h"
#include "quillon/Variant.h"

namespace quillon {

/// Keeps an ordered list of Variants: a row of a DataTable, or named values on their own, such
/// as the arguments of a command line.
///
/// Names need not be unique; look-ups compare bytes, case-sensitively, and find the first. An
/// index or name that is not there throws std::invalid_argument and logs nothing. Adding and
/// removing invalidate references, pointers and iterators into the list. Copies are deep; a
/// move leaves the source empty. The elements lie in one block of memory. One object is changed by one
/// thread at a time, and not while others read it; any number of threads may call its const operations
/// at once.
///
/// @code
/// VariantList row;
/// row.Add("name", "spooler");
/// row.Add("pid", 1234);
/// if (const Variant* pid = row.Find("pid")) std::cout << pid->GetLongLongValue() << '\n';
/// std::cout << row.ToString(", ", "'") << '\n';  // spooler, 1234
/// for (const Variant& cell : row) std::cout << cell.GetName() << '\n';
/// @endcode
class QUILLON_API VariantList {
public:
    using iterator = Variant*;
    using const_iterator = const Variant*;

    /// Makes an empty list; it allocates no memory.
    VariantList();
    /// Makes a list of copies of one to nine values, in the order of the arguments.
    explicit VariantList(const Variant& v1);
    VariantList(const Variant& v1, const Variant& v2);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4,
                const Variant& v5);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4, const Variant& v5,
                const Variant& v6);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4, const Variant& v5,
                const Variant& v6, const Variant& v7);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4, const Variant& v5,
                const Variant& v6, const Variant& v7, const Variant& v8);
    VariantList(const Variant& v1, const Variant& v2, const Variant& v3, const Variant& v4, const Variant& v5,
                const Variant& v6, const Variant& v7, const Variant& v8, const Variant& v9);
    /// Makes a list of copies of any number of values: `VariantList{{"name", "a.log"}, {"size", 10}}`.
    VariantList(std::initializer_list<Variant> values);
    /// Copies every element. The copy's own walk (GetFirst()) is at its end until it is
    /// started.
    VariantList(const VariantList& other);
    VariantList& operator=(const VariantList& other);
    VariantList(VariantList&& other) noexcept : m_block(std::move(other.m_block)) { LeaveChunk(); }
    VariantList& operator=(VariantList&& other) noexcept {
        m_block = std::move(other.m_block);
        LeaveChunk();
        return *this;
    }
    ~VariantList() = default;

    /// Appends a copy of the value, or the value itself from an rvalue. The value may be an
    /// element of this list. A pointer must not be null; the list does not take what it points
    /// to.
    void Add(const Variant& value);
    void Add(Variant&& value);
    void Add(const Variant* value);
    /// Appends a new value of the argument's kind; a null text pointer counts as the empty
    /// text.
    void Add(const std::string& name, const char* value);
    void Add(const std::string& name, const std::string& value);
    void Add(const std::string& name, std::string&& value);
    void Add(const std::string& name, long long value);
    void Add(const std::string& name, bool value);
    void Add(const std::string& name, double value);
    void Add(const std::string& name, std::string_view value);
    template <NarrowInteger T>
    void Add(const std::string& name, T value) {
        Add(name, static_cast<long long>(value));
    }
    /// Appends what the constructors of Variant make of the same arguments: an unsigned 64-bit integer,
    /// a time point of any clock, a value or null.
    template <WideUnsigned T>
    void Add(const std::string& name, T value) {
        Add(Variant(name, value));
    }
    template <class Clock, class Duration>
    void Add(const std::string& name, const std::chrono::time_point<Clock, Duration>& value) {
        Add(Variant(name, value));
    }
    template <class T>
    void Add(const std::string& name, const std::optional<T>& value) {
        Add(Variant(name, value));
    }
    void Add(const std::string& name, std::nullptr_t) { Add(Variant::NullVariant(name)); }
    void Add(const std::string& name, std::nullopt_t) { Add(Variant::NullVariant(name)); }
    /// Refuses pointers and characters; the constructors of Variant say what to write instead.
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) void Add(const std::string& name, T* value) = delete;
    template <Character T>
    void Add(const std::string& name, T value) = delete;
    /// Appends a null placeholder of that type, as Variant's constructor from a name and a type
    /// makes it: an unsupported type logs an Error entry and still gives a null.
    void AddEmptyCell(const std::string& name, const std::type_index& type);
    /// Allocates room for `count` elements in all, so that adding up to them moves none.
    void Reserve(std::size_t count);
    /// Erases the first element of that name, or the first equal to `value`; returns false when
    /// there is none. A removal ends the walk of GetFirst().
    bool Remove(const std::string& name);
    bool Remove(const Variant& value);
    /// Erases all elements and frees their memory.
    void Clear();

    /// Returns the number of elements.
    [[nodiscard]] unsigned long long Size() const { return m_block ? m_block->size : 0; }
    /// Returns the element at an index from 0, or the first of a name. The messages of the
    /// exception are "index 7 out of range" and "index 'name' not present".
    const Variant& operator[](int index) const;
    const Variant& operator[](const std::string& name) const {
        const Variant* const found = Find(name);
        if (found == nullptr) ThrowNotPresent(name);
        return *found;
    }
    /// Returns the same. The index is converted to `int` first, so one of 2^32 finds element 0.
    const Variant& Get(unsigned long long index) const;
    const Variant& Get(const std::string& name) const;
    /// Returns whether an element has that name.
    [[nodiscard]] bool Contains(const std::string& name) const { return Find(name) != nullptr; }
    /// Returns the first element of that name, or null when there is none; it never throws.
    [[nodiscard]] const Variant* Find(const std::string& name) const {
        const const_iterator last = end();
        for (const_iterator cell = begin(); cell != last; ++cell) {
            if (detail::EqualTexts(cell->GetName(), name)) return cell;
        }
        return nullptr;
    }
    [[nodiscard]] Variant* Find(const std::string& name) {
        return const_cast<Variant*>(std::as_const(*this).Find(name));
    }
    /// Returns Variant::TypeIs() of the element at `index`. The message of the exception is
    /// "TypeIs index 7 out of range".
    [[nodiscard]] bool TypeIs(const std::type_info& type, int index) const;

    /// Starts a walk over elements that may be changed, or takes its next step. The list keeps
    /// the position, so two walks cannot be nested. Both return null at the end, and GetNext()
    /// also before a first GetFirst(). The caller may rename what is handed out.
    Variant* GetFirst();
    Variant* GetNext();
    /// Walks over the elements with a position that the caller keeps; both return null at the
    /// end. cGetFirst() sets the position, cGetNext() advances it.
    const Variant* cGetFirst(const_iterator& position) const;
    const Variant* cGetNext(const_iterator& position) const;
    /// Calls the visitor with each element in order until it returns false. An empty visitor
    /// throws std::bad_function_call unless the list is empty.
    void VisitItems(const std::function<bool(const Variant&)>& visitor) const;
    /// Returns the range for a `for` loop and for algorithms.
    const_iterator begin() const { return m_block ? m_block->Cells() : nullptr; }
    const_iterator end() const { return m_block ? m_block->Cells() + m_block->size : nullptr; }
    iterator begin() { return m_block ? m_block->Cells() : nullptr; }
    iterator end() { return m_block ? m_block->Cells() + m_block->size : nullptr; }

    /// Compares the elements in order, as Variant does: names, null flags, kinds, values.
    bool operator==(const VariantList& other) const;
    bool operator!=(const VariantList& other) const;
    /// Returns a hash of the elements in their order; equal lists have equal hashes within one process.
    [[nodiscard]] std::size_t Hash() const noexcept;
    /// Compares the elements whatever their order, each pairing with one of the other list.
    /// The cost grows with the number of elements.
    [[nodiscard]] bool Similar(const VariantList& other) const;
    /// Returns the opposite of Similar().
    [[nodiscard]] bool NotSimilar(const VariantList& other) const;

    /// Returns the elements' AsString() joined by `separator`. Texts that hold white space
    /// stand between two `quote`; quotes inside are not escaped. Null pointers count as empty
    /// texts.
    [[nodiscard]] std::string ToString(const char* separator, const char* quote) const;
    /// Returns the same in UTF-16; the empty text, with one Error entry, when it is not valid
    /// UTF-8.
    [[nodiscard]] std::wstring ToWideString(const char* separator, const char* quote) const;
    /// Returns every value between quotes, joined by `delimiter`; with `optionsUnquoted`, texts
    /// that begin with '-' stand without quotes. Quotes inside a value are not escaped: for a
    /// command line that must survive any argument, use CommandLineBuilder.
    [[nodiscard]] std::string ToDelimitedStrings(char delimiter, char quote, bool optionsUnquoted) const;
    /// Writes Debug lines: a start and an end line with the title, and between them
    /// Variant::Dump() of each element, one blank further in. `indent` is at most 40 blanks. A
    /// null logger means the registered one, and standard error when there is none.
    void Dump(const char* title, ICLogger* logger, unsigned int indent) const;

private:
    friend struct CellAccess;

    /// Stands before the elements in the same block of memory.
    struct Block {
        std::uint32_t size = 0;                    // elements that are alive
        std::uint32_t capacity = 0;                // elements that there is room for
        std::uint32_t cursor = ~std::uint32_t{0};  // of GetFirst() and GetNext(); unset at first
        std::uint32_t chunkOffset = 0;             // behind the chunk's beginning; 0: a block of its own

        Variant* Cells() noexcept { return reinterpret_cast<Variant*>(this + 1); }
        const Variant* Cells() const noexcept { return reinterpret_cast<const Variant*>(this + 1); }
    };
    struct Deleter {
        void operator()(Block* block) const noexcept { Delete(block); }
    };
    using BlockOwner = std::unique_ptr<Block, Deleter>;

    static void Delete(Block* block) noexcept;
    static BlockOwner Allocate(std::size_t capacity);
    static BlockOwner CopyOf(const VariantList& other);
    [[noreturn]] static void ThrowNotPresent(const std::string& name);
    /// Takes a block of its own when the list was moved from a table: the row would keep the memory of
    /// other rows from being freed. Without memory for it the list stays where it is.
    void LeaveChunk() noexcept {
        if (m_block && m_block->chunkOffset != 0) MoveOut();
    }
    void MoveOut() noexcept;
    void MoveTo(BlockOwner block) noexcept;
    /// Whether the next element needs another block.
    bool IsFull() const noexcept { return !m_block || m_block->size == m_block->capacity; }
    /// Makes room for more elements.
    void Grow();
    /// Makes an element at the end; the arguments may be part of this list.
    template <class... Arguments>
    void Emplace(Arguments&&... arguments);
    void AddAll(std::initializer_list<const Variant*> values);
    bool Erase(const_iterator position);

    BlockOwner m_block;  // none while nothing was ever added, and after a move
};

/// Writes the list as "{name=value, ...}", the values as by Variant::AsString().
QUILLON_API std::ostream& operator<<(std::ostream& stream, const VariantList& list);

/// Shows a list with names and kinds in the messages of GoogleTest.
QUILLON_API void PrintTo(const VariantList& list, std::ostream* stream);

}  // namespace quillon

/// Hashes a list as its Hash() does.
template <>
struct std::hash<quillon::VariantList> {
    std::size_t operator()(const quillon::VariantList& list) const noexcept { return list.Hash(); }
};
