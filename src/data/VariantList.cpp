#include "quillon/VariantList.h"

#include <algorithm>
#include <array>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/TextOrEmpty.h"
#include "data/DumpWriter.h"
#include "data/NameMarks.h"
#include "data/VariantRecord.h"
#include "quillon/StringUtils.h"

namespace quillon {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
/// Up to this size comparing every pair is cheaper than sorting by hash.
constexpr std::size_t kPairwiseLimit = 16;

/// Whether the elements of two ranges of one size can be paired as equals. Swaps
/// what is matched to the front of `right`.
template <class Left, class Right, class Equal>
bool PairUp(Left left, Left leftEnd, Right right, Right rightEnd, Equal equal) {
    for (; left != leftEnd; ++left, ++right) {
        const auto match =
            std::find_if(right, rightEnd, [&](const auto& item) { return equal(*left, item); });
        if (match == rightEnd) return false;
        std::iter_swap(right, match);
    }
    return true;
}

}  // namespace

struct VariantList::Record {
    Record() = default;
    Record(const Record& other) : elements(other.elements) { MarkAll(); }
    Record& operator=(const Record&) = delete;

    template <class... Arguments>
    void Add(Arguments&&... arguments) {
        elements.emplace_back(std::forward<Arguments>(arguments)...);
        marks.Set(elements.size() - 1, elements.back().GetName());
    }

    void MarkAll() noexcept {
        marks.Clear();
        for (std::size_t i = 0; i < std::min(elements.size(), NameMarks::kCapacity); ++i) {
            marks.Set(i, elements[i].GetName());
        }
    }

    const Variant* Find(const std::string& name) const noexcept {
        const Variant* found = nullptr;
        const auto matches = [&](std::size_t index) {
            const bool equal = EqualNames(elements[index].Get().name, name);
            if (equal) found = &elements[index];
            return equal;
        };
        if (!renamable && marks.AnyOf(name, matches)) return found;
        std::size_t index = renamable ? 0 : NameMarks::kCapacity;
        while (index < elements.size() && !matches(index)) ++index;
        return found;
    }

    std::vector<Variant> elements;
    std::size_t cursor = std::numeric_limits<std::size_t>::max();  // of GetFirst and GetNext; unset at first
    NameMarks marks;
    bool renamable = false;  // an element was handed out, so the marks may be stale
};

// Inline, as every look-up comes by here.
inline const std::vector<Variant>& VariantList::Elements() const noexcept {
    if (m_record) return m_record->elements;
    static const std::vector<Variant> none;
    return none;
}

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

VariantList::VariantList(const VariantList& other)
    : m_record(other.m_record ? new Record(*other.m_record) : nullptr) {}

VariantList& VariantList::operator=(const VariantList& other) {
    if (this != &other) *this = VariantList(other);
    return *this;
}

void VariantList::Add(const Variant& value) { Own().Add(value); }
void VariantList::Add(Variant&& value) { Own().Add(std::move(value)); }
void VariantList::Add(const Variant* value) { Add(*value); }
void VariantList::Add(const std::string& name, const char* value) { Own().Add(name, value); }
void VariantList::Add(const std::string& name, const std::string& value) { Own().Add(name, value); }
void VariantList::Add(const std::string& name, std::string&& value) { Own().Add(name, std::move(value)); }
void VariantList::Add(const std::string& name, long long value) { Own().Add(name, value); }
void VariantList::Add(const std::string& name, bool value) { Own().Add(name, value); }
void VariantList::Add(const std::string& name, double value) { Own().Add(name, value); }
void VariantList::AddEmptyCell(const std::string& name, const std::type_index& type) {
    Own().Add(name, type);
}

void VariantList::Reserve(std::size_t count) { Own().elements.reserve(count); }

bool VariantList::Remove(const std::string& name) {
    const Variant* const found = Find(name);
    return found != nullptr && Erase(begin() + (found - Elements().data()));
}

bool VariantList::Remove(const Variant& value) { return Erase(std::find(begin(), end(), value)); }

void VariantList::Clear() { m_record.reset(); }

unsigned long long VariantList::Size() const { return Elements().size(); }

const Variant& VariantList::operator[](int index) const {
    const auto& elements = Elements();
    if (index >= 0 && static_cast<std::size_t>(index) < elements.size()) {
        return elements[static_cast<std::size_t>(index)];
    }
    throw std::invalid_argument("index " + std::to_string(index) + " out of range");
}

const Variant& VariantList::operator[](const std::string& name) const {
    if (const Variant* found = Find(name)) return *found;
    throw std::invalid_argument("index '" + name + "' not present");
}

const Variant& VariantList::Get(unsigned long long index) const { return (*this)[static_cast<int>(index)]; }
const Variant& VariantList::Get(const std::string& name) const { return (*this)[name]; }
bool VariantList::Contains(const std::string& name) const { return Find(name) != nullptr; }

const Variant* VariantList::Find(const std::string& name) const {
    return m_record ? m_record->Find(name) : nullptr;
}

bool VariantList::TypeIs(const std::type_info& type, int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= Elements().size()) {
        throw std::invalid_argument("TypeIs index " + std::to_string(index) + " out of range");
    }
    return (*this)[index].TypeIs(type);
}

Variant* VariantList::GetFirst() {
    if (m_record) m_record->cursor = 0;
    return GetNext();
}

Variant* VariantList::GetNext() {
    if (!m_record || m_record->cursor >= m_record->elements.size()) return nullptr;
    m_record->renamable = true;
    return &m_record->elements[m_record->cursor++];
}

const Variant* VariantList::cGetFirst(const_iterator& position) const {
    position = begin();
    return cGetNext(position);
}

const Variant* VariantList::cGetNext(const_iterator& position) const {
    return position != end() ? &*position++ : nullptr;
}

void VariantList::VisitItems(const std::function<bool(const Variant&)>& visitor) const {
    for (const Variant& element : Elements()) {
        if (!visitor(element)) return;
    }
}

VariantList::const_iterator VariantList::begin() const { return Elements().begin(); }
VariantList::const_iterator VariantList::end() const { return Elements().end(); }

bool VariantList::operator==(const VariantList& other) const { return Elements() == other.Elements(); }
bool VariantList::operator!=(const VariantList& other) const { return !(*this == other); }

bool VariantList::Similar(const VariantList& other) const {
    if (Size() != other.Size()) return false;
    return Size() <= kPairwiseLimit ? SimilarByPairs(other) : SimilarByHash(other);
}

bool VariantList::NotSimilar(const VariantList& other) const { return !Similar(other); }

std::string VariantList::ToString(const char* separator, const char* quote) const {
    const std::string_view gap = base::TextOrEmpty(separator), mark = base::TextOrEmpty(quote);
    std::string result;
    for (const Variant& element : Elements()) {
        if (&element != &Elements().front()) result += gap;
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
    for (const Variant& element : Elements()) {
        if (&element != &Elements().front()) result += delimiter;
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
    for (const Variant& element : Elements()) element.Dump(target, InnerIndent(indent));
    WriteDumpLine(target, prefix + "End of VariantList dump: " + shownTitle);
}

void VariantList::Delete(Record* record) noexcept { delete record; }

VariantList::Record& VariantList::Own() {
    if (!m_record) m_record.reset(new Record);
    return *m_record;
}

void VariantList::AddAll(std::initializer_list<const Variant*> values) {
    Reserve(values.size());
    for (const Variant* value : values) Add(*value);
}

bool VariantList::Erase(const_iterator position) {
    if (position == end()) return false;
    m_record->elements.erase(position);
    m_record->MarkAll();
    m_record->cursor = std::numeric_limits<std::size_t>::max();
    return true;
}

bool VariantList::SimilarByPairs(const VariantList& other) const {
    std::array<const Variant*, kPairwiseLimit> candidates{};
    auto* const last = std::transform(other.begin(), other.end(), candidates.data(),
                                      [](const Variant& element) { return &element; });
    return PairUp(begin(), end(), candidates.data(), last,
                  [](const Variant& own, const Variant* candidate) { return own == *candidate; });
}

/// Elements that are equal have equal hashes, so only runs of one hash, which
/// are short unless elements repeat, need comparing.
bool VariantList::SimilarByHash(const VariantList& other) const {
    auto left = SortedByHash(), right = other.SortedByHash();
    const auto equal = [](const Hashed& a, const Hashed& b) { return *a.element == *b.element; };
    for (std::size_t start = 0, next = 0; start < left.size(); start = next) {
        while (next < left.size() && left[next].hash == left[start].hash) {
            if (right[next].hash != left[next].hash) return false;
            ++next;
        }
        const auto from = static_cast<std::ptrdiff_t>(start), to = static_cast<std::ptrdiff_t>(next);
        if (!PairUp(left.begin() + from, left.begin() + to, right.begin() + from, right.begin() + to,
                    equal)) {
            return false;
        }
    }
    return true;
}

std::vector<VariantList::Hashed> VariantList::SortedByHash() const {
    std::vector<Hashed> result;
    result.reserve(Elements().size());
    for (const Variant& element : Elements()) result.push_back({element.Hash(), &element});
    std::sort(result.begin(), result.end(), [](const Hashed& a, const Hashed& b) { return a.hash < b.hash; });
    return result;
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
