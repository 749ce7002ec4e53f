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

/// An ordered list of Variants: one row of a DataTable, or named values on their
/// own. Names need not be unique; look-ups compare bytes and find the first. An
/// index or name that is not there throws std::invalid_argument. Adding and
/// removing invalidate positions. A move leaves the source empty. One object is
/// used by one thread at a time.
class QUILLON_API VariantList {
public:
    using const_iterator = std::vector<Variant>::const_iterator;

    VariantList();
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
    VariantList(const VariantList& other);
    VariantList& operator=(const VariantList& other);
    VariantList(VariantList&& other) noexcept = default;
    VariantList& operator=(VariantList&& other) noexcept = default;
    ~VariantList() = default;

    void Add(const Variant& value);
    void Add(Variant&& value);
    /// The pointer must not be null.
    void Add(const Variant* value);
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
    /// A null placeholder of that type.
    void AddEmptyCell(const std::string& name, const std::type_index& type);
    /// Room for this many elements without another allocation.
    void Reserve(std::size_t count);
    /// Erases the first element of that name, or equal to `value`; false when there is none.
    bool Remove(const std::string& name);
    bool Remove(const Variant& value);
    void Clear();

    unsigned long long Size() const;
    const Variant& operator[](int index) const;
    const Variant& operator[](const std::string& name) const;
    const Variant& Get(unsigned long long index) const;
    const Variant& Get(const std::string& name) const;
    bool Contains(const std::string& name) const;
    /// The first element of that name, null when there is none.
    const Variant* Find(const std::string& name) const;
    bool TypeIs(const std::type_info& type, int index) const;

    /// A walk whose position is kept in the list; null at the end.
    Variant* GetFirst();
    Variant* GetNext();
    /// The same with the caller's own position.
    const Variant* cGetFirst(const_iterator& position) const;
    const Variant* cGetNext(const_iterator& position) const;
    /// Calls the visitor in order until it returns false.
    void VisitItems(const std::function<bool(const Variant&)>& visitor) const;
    const_iterator begin() const;
    const_iterator end() const;

    bool operator==(const VariantList& other) const;
    bool operator!=(const VariantList& other) const;
    /// Equality as multisets, whatever the order.
    bool Similar(const VariantList& other) const;
    bool NotSimilar(const VariantList& other) const;

    /// Texts joined by `separator`; text values that hold white space are put in
    /// `quote`. Null or empty means none.
    std::string ToString(const char* separator, const char* quote) const;
    std::wstring ToWideString(const char* separator, const char* quote) const;
    /// Every value in quotes; with `optionsUnquoted`, texts that begin with '-' are
    /// not. Quotes inside a value are not escaped.
    std::string ToDelimitedStrings(char delimiter, char quote, bool optionsUnquoted) const;
    /// Debug lines, indented by up to 40 blanks. A null logger means the registered one,
    /// else standard error.
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

/// As "{name=value, ...}".
QUILLON_API std::ostream& operator<<(std::ostream& stream, const VariantList& list);

}  // namespace quillon
