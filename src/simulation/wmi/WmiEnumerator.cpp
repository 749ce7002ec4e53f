#include "simulation/wmi/WmiEnumerator.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"
#include "simulation/wmi/WmiObject.h"

namespace quillon::simulation {

namespace {

bool Has(const std::vector<std::wstring>& names, std::wstring_view name) {
    return std::any_of(names.begin(), names.end(),
                       [name](const std::wstring& other) { return base::EqualIgnoringCase(name, {other}); });
}

/// The class's shape, or that part of it that the query names; the path is known when all keys are there, or
/// when it was asked for itself.
WmiShapePtr ShapeFor(const WmiSchema& schema, const std::vector<std::wstring>& names) {
    if (names.empty()) return schema.shape;
    std::vector<WmiShape::Property> chosen;
    for (const WmiShape::Property& property : schema.shape->Properties()) {
        if (Has(names, property.name)) chosen.push_back(property);
    }
    const auto keys = schema.KeyNames();
    const bool hasKeys =
        std::all_of(keys.begin(), keys.end(), [&names](const std::wstring& key) { return Has(names, key); });
    const bool showsPath = hasKeys || Has(names, L"__PATH") || Has(names, L"__RELPATH");
    return std::make_shared<const WmiShape>(std::move(chosen), showsPath);
}

/// Returns the properties that a provider has to find out; an empty list means all.
std::vector<std::wstring> Wanted(const WqlQuery& query, const WmiSchema& schema, bool showsPath) {
    if (query.Properties().empty()) return {};
    std::vector<std::wstring> names = query.Properties();
    for (std::wstring& name : query.ConditionProperties()) names.push_back(std::move(name));
    const auto isSystem = [](const std::wstring& name) { return FindSystemProperty(name).has_value(); };
    const bool needsKeys = showsPath || std::any_of(names.begin(), names.end(), isSystem);
    if (needsKeys) {
        for (std::wstring& key : schema.KeyNames()) names.push_back(std::move(key));
    }
    std::vector<std::wstring> wanted;
    for (std::wstring& name : names) {
        if (!isSystem(name) && !Has(wanted, name)) wanted.push_back(std::move(name));
    }
    return wanted;
}

WmiState::Deadline After(LONG timeout) {
    if (timeout < 0) return std::nullopt;
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
}

}  // namespace

WmiEnumerator::WmiEnumerator(const std::shared_ptr<WmiState>& state, const std::wstring& nameSpace,
                             WqlQuery query)
    : WbemObject(state), m_query(std::move(query)) {
    m_result = Start(nameSpace);
}

HRESULT WmiEnumerator::Start(const std::wstring& nameSpace) {
    {
        const std::lock_guard lock(State()->mutex);
        const WmiTable* const table = State()->FindTable(nameSpace, m_query.ClassName());
        if (table == nullptr) return Code(WBEM_E_INVALID_CLASS);
        m_schema = table->Schema();
        m_stored = table->Rows();
    }
    if (!KnowsProperties()) return Code(WBEM_E_INVALID_QUERY);
    m_shape = ShapeFor(*m_schema, m_query.Properties());
    return S_OK;
}

HRESULT WmiEnumerator::Provide() {
    if (FAILED(m_result) || m_isProvided || !m_schema->live) return m_result;
    m_isProvided = true;
    m_result = AskProvider(*m_schema, Wanted(m_query, *m_schema, m_shape->ShowsPath()), m_provided);
    return m_result;
}

bool WmiEnumerator::KnowsProperties() const {
    const auto known = [this](const std::wstring& name) {
        return m_schema->shape->Find(name) != nullptr || FindSystemProperty(name);
    };
    const auto conditionNames = m_query.ConditionProperties();
    return std::all_of(m_query.Properties().begin(), m_query.Properties().end(), known) &&
           std::all_of(conditionNames.begin(), conditionNames.end(), known);
}

HRESULT WmiEnumerator::Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) {
    if (objects == nullptr || returned == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    *returned = 0;
    if (const auto code = State()->Begin(WmiCall::Next)) return *code;

    const std::lock_guard turn(m_turn);
    if (const HRESULT result = Provide(); FAILED(result)) return result;
    try {
        return Fill(After(timeout), count, objects, *returned);
    } catch (const std::exception&) {
        while (*returned != 0) objects[--*returned]->Release();
        return Code(WBEM_E_PROVIDER_FAILURE);
    }
}

HRESULT WmiEnumerator::Fill(const WmiState::Deadline& deadline, ULONG count, IWbemClassObject** objects,
                            ULONG& returned) {
    while (returned < count) {
        if (!State()->AwaitAnswer(m_delivered, deadline)) return Code(WBEM_S_TIMEDOUT);
        WmiRowPtr row = NextMatch();
        if (row == nullptr) return Code(WBEM_S_FALSE);
        objects[returned] =
            new WmiObject(State(), WmiObject::Kind::Instance, m_schema, m_shape, std::move(row));
        ++returned;
        ++m_delivered;
    }
    return S_OK;
}

WmiRowPtr WmiEnumerator::NextRow() {
    if (m_schema->live) {
        return m_position == m_provided.size() ? nullptr : MakeRow(*m_schema, m_provided[m_position++]);
    }
    return m_position == m_stored.size() ? nullptr : std::move(m_stored[m_position++]);
}

WmiRowPtr WmiEnumerator::NextMatch() {
    while (WmiRowPtr row = NextRow()) {
        m_computed.clear();
        const auto value = [this, &row](std::wstring_view name) { return Value(*row, name); };
        if (m_query.Matches(value)) return row;
    }
    return nullptr;
}

const VARIANT* WmiEnumerator::Value(const WmiRow& row, std::wstring_view name) {
    const WmiShape& shape = *m_schema->shape;
    if (const WmiShape::Property* const property = shape.Find(name)) {
        const VARIANT& value = row[property->slot];
        if (property->type != CIM_UINT32 || value.vt != VT_I4 || value.lVal >= 0) return &value;
        return &m_computed.emplace_back(IntegerVariant(VT_I8, static_cast<ULONG>(value.lVal)));
    }
    const auto position = FindSystemProperty(name);
    if (!position) return nullptr;
    return &m_computed.emplace_back(SystemPropertyValue(*position, {*m_schema, shape, row, false}));
}

}  // namespace quillon::simulation
