#include "data/RowsAhead.h"
#include "quillon/DataTable.h"

namespace quillon {
namespace {

template <class Compare>
bool EqualRows(const DataTable& left, const DataTable& right, Compare compare) {
    if (left.GetNumberOfRows() != right.GetNumberOfRows()) return false;
    RowsAhead ahead(left.begin(), left.end()), otherAhead(right.begin(), right.end());
    auto other = right.begin();
    for (const VariantList& row : left) {
        ahead.Pass(row);
        otherAhead.Pass(row);
        if (!compare(row, *other++)) return false;
    }
    return true;
}

}  // namespace

bool DataTable::ContentEqual(const DataTable& other) const {
    return EqualRows(*this, other, [](const VariantList& own, const VariantList& its) { return own == its; });
}

bool DataTable::ContentSimilar(const DataTable& other) const {
    return EqualRows(*this, other,
                     [](const VariantList& own, const VariantList& its) { return own.Similar(its); });
}

bool DataTable::operator==(const DataTable& other) const {
    return ContentEqual(other) && GetColumnNames() == other.GetColumnNames();
}

bool DataTable::operator!=(const DataTable& other) const {
    return IsUndefined() != other.IsUndefined() || !(*this == other);
}

bool DataTable::Similar(const DataTable& other, bool ignoreColumns) const {
    return ContentSimilar(other) && (ignoreColumns || ColumnNames().Similar(other.ColumnNames()));
}

bool DataTable::NotSimilar(const DataTable& other) const {
    return IsUndefined() != other.IsUndefined() || !Similar(other, false);
}

}  // namespace quillon
