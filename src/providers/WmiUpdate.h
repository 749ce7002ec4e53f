#pragma once

#include <string>
#include <vector>

#include "platform/Wbem.h"
#include "quillon/WmiConnector.h"

namespace quillon {

/// The changes of one update. What is put is settled by the types of the first object.
class WmiConnector::Update {
public:
    /// Returns whether there is a row with a value for each column.
    static bool IsUsable(const DataTable* updates);

    /// `updates` is usable and lives as long.
    Update(const WmiConnector& connector, const DataTable& updates);
    /// Puts the values into the object's properties; reports a failure.
    bool Apply(IWbemClassObject& object);

private:
    struct Change {
        std::string label;
        std::wstring name;
        _variant_t value;
        CIMTYPE type;
    };

    bool Prepare(IWbemClassObject& object);
    Change MakeChange(const std::string& label, CIMTYPE type, const Variant& value) const;
    /// Makes the change of a value that is no scalar; false when it is refused.
    bool MakeOther(Change& change, const Variant& value) const;
    bool Refuse(const Change& change) const;
    bool Put(IWbemClassObject& object, std::size_t position);

    const WmiConnector& m_connector;
    const std::vector<std::string> m_columns;
    const VariantList& m_row;
    std::vector<Change> m_changes;
    bool m_isPrepared = false;
};

}  // namespace quillon
