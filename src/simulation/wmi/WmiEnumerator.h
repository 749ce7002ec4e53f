#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "simulation/wmi/WbemObject.h"
#include "simulation/wql/WqlQuery.h"

namespace quillon::simulation {

/// The objects that answer a query, as they stood when it was made; each is made when it is asked for.
class WmiEnumerator final : public WbemObject<IEnumWbemClassObject> {
public:
    WmiEnumerator(const std::shared_ptr<WmiState>& state, const std::wstring& nameSpace, WqlQuery query);

    /// Asks the provider of a live class, on the caller's thread and once, unless Next() has done so.
    /// Returns the code that Next() fails with: WBEM_E_INVALID_CLASS, WBEM_E_INVALID_QUERY when the class
    /// has no such property, WBEM_E_PROVIDER_FAILURE.
    HRESULT Provide();

    HRESULT Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override;

private:
    ~WmiEnumerator() override = default;

    HRESULT Start(const std::wstring& nameSpace);
    bool KnowsProperties() const;
    /// Returns the next row; null at the end. Throws std::invalid_argument when the provider gave a name
    /// that is not a property of the class.
    WmiRowPtr NextRow();
    WmiRowPtr NextMatch();
    const VARIANT* Value(const WmiRow& row, std::wstring_view name);
    HRESULT Fill(const WmiState::Deadline& deadline, ULONG count, IWbemClassObject** objects,
                 ULONG& returned);

    const WqlQuery m_query;
    WmiSchemaPtr m_schema;
    WmiShapePtr m_shape;

    std::mutex m_turn;  // one Next at a time; also what follows
    HRESULT m_result = 0;
    bool m_isProvided = false;
    std::vector<WmiRowPtr> m_stored;
    std::vector<WmiValues> m_provided;
    std::size_t m_position = 0;
    long m_delivered = 0;
    std::deque<_variant_t> m_computed;  // what the condition reads of the row and no row holds
};

}  // namespace quillon::simulation
