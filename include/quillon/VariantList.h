#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "quillon/Export.h"
#include "quillon/Variant.h"

namespace quillon {

/// Keeps an ordered list of Variants: a row of a DataTable, or named values on their own, such
/// as the arguments of a command line.
///
/// Names need not be unique; look-ups compare bytes, case-sensitively, and find the first. An
/// index or name that is not there throws std::invalid_argument and logs nothing. Adding and
/// removing invalidate references, pointers and iterators into the list. Copies are deep; a
/// move leaves the source empty. One object is used by one thread at a time.
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
    using const_iterator = std::vector<Variant>::const_iterator;

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
    /// Copies every element. The copy's own walk (GetFirst()) is at its end until it is
    /// started.
    VariantList(const VariantList& other);
    VariantList& operator=(const VariantList& other);
    VariantList(VariantList&& other) noexcept = default;
    VariantList& operator=(VariantList&& other) noexcept = default;
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
    template <NarrowInteger T>
    void Add(const std::string& name, T value) {
        Add(name, static_cast<long long>(value));
    }
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, char>) void Add(const std::string& name, T* value) = delete;
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
    unsigned long long Size() const;
    /// Returns the element at an index from 0, or the first of a name. The messages of the
    /// exception are "index 7 out of range" and "index 'name' not present".
    const Variant& operator[](int index) const;
    const Variant& operator[](const std::string& name) const;
    /// Returns the same. The index is converted to `int` first, so one of 2^32 finds element 0.
    const Variant& Get(unsigned long long index) const;
    const Variant& Get(const std::string& name) const;
    /// Returns whether an element has that name.
    bool Contains(const std::string& name) const;
    /// Returns the first element of that name, or null when there is none; it never throws.
    const Variant* Find(const std::string& name) const;
    /// Returns Variant::TypeIs() of the element at `index`. The message of the exception is
    /// "TypeIs index 7 out of range".
    bool TypeIs(const std::type_info& type, int index) const;

    /// Starts a walk over elements that may be changed, or takes its next step. The list keeps
    /// the position, so two walks cannot be nested. Both return null at the end, and GetNext()
    /// also before a first GetFirst(). The caller may rename what is handed out, so look-ups by
    /// name are slower from then on.
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
    const_iterator begin() const;
    const_iterator end() const;

    /// Compares the elements in order, as Variant does: names, null flags, kinds, values.
    bool operator==(const VariantList& other) const;
    bool operator!=(const VariantList& other) const;
    /// Compares the elements whatever their order, each pairing with one of the other list.
    /// Long lists are sorted by hash, so the cost stays near n log n.
    bool Similar(const VariantList& other) const;
    /// Returns the opposite of Similar().
    bool NotSimilar(const VariantList& other) const;

    /// Returns the elements' AsString() joined by `separator`. Texts that hold white space
    /// stand between two `quote`; quotes inside are not escaped. Null pointers count as empty
    /// texts.
    std::string ToString(const char* separator, const char* quote) const;
    /// Returns the same in UTF-16; the empty text, with one Error entry, when it is not valid
    /// UTF-8.
    std::wstring ToWideString(const char* separator, const char* quote) const;
    /// Returns every value between quotes, joined by `delimiter`; with `optionsUnquoted`, texts
    /// that begin with '-' stand without quotes. Quotes inside a value are not escaped: for a
    /// command line that must survive any argument, use CommandLineBuilder.
    std::string ToDelimitedStrings(char delimiter, char quote, bool optionsUnquoted) const;
    /// Writes Debug lines: a start and an end line with the title, and between them
    /// Variant::Dump() of each element, one blank further in. `indent` is at most 40 blanks. A
    /// null logger means the registered one, and standard error when there is none.
    void Dump(const char* title, ICLogger* logger, unsigned int indent) const;

private:
    struct Record;
    struct Deleter {
        void operator()(Record* record) const noexcept { Delete(record); }
    };

    struct Hashed {
        std::size_t hash;
        const Variant* element;
    };

    static void Delete(Record* record) noexcept;
    Record& Own();
    const std::vector<Variant>& Elements() const noexcept;
    void AddAll(std::initializer_list<const Variant*> values);
    bool Erase(const_iterator position);
    bool SimilarByPairs(const VariantList& other) const;
    bool SimilarByHash(const VariantList& other) const;
    std::vector<Hashed> SortedByHash() const;

    std::unique_ptr<Record, Deleter> m_record;  // none while nothing was ever added, and after a move
};

/// Writes the list as "{name=value, ...}", the values as by Variant::AsString().
QUILLON_API std::ostream& operator<<(std::ostream& stream, const VariantList& list);

}  // namespace quillon
