#include <charconv>
#include <optional>

#include "base/Utf.h"
#include "platform/TextApi.h"
#include "providers/WmiArrayValue.h"
#include "providers/WmiCimTypes.h"
#include "providers/WmiEnumeration.h"
#include "providers/WmiOperation.h"
#include "providers/WmiOwners.h"
#include "providers/WmiServices.h"
#include "providers/WmiUpdate.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

/// Returns the text of a stored value for the log.
std::string Describe(const _variant_t& value, CIMTYPE type) {
    if (value.vt == VT_NULL && type != CIM_ILLEGAL) return "null";
    switch (type) {
        case CIM_REAL64:
            return "real64:" + Variant(value.dblVal).AsString();
        case CIM_STRING:
        case CIM_DATETIME:
        case CIM_UINT64:  // a text past the signed range
            return base::ToUtf8(platform::BstrText(value.bstrVal));
        case CIM_BOOLEAN:
            return std::string("bool:") + StringUtils::BoolValAsString(value.boolVal == VARIANT_TRUE);
        case CIM_SINT64:
            return "sint64:" + std::to_string(value.llVal);
        default:
            return {};
    }
}

bool IsScalar(CIMTYPE type) {
    return IsInteger(type) || IsReal(type) || type == CIM_STRING || type == CIM_DATETIME ||
           type == CIM_BOOLEAN;
}

/// Whether a value is none of those that are written under every policy.
bool IsOther(CIMTYPE type, const Variant& value) {
    return value.IsNull() || !IsScalar(type) || (type == CIM_UINT64 && value.TypeIs(typeid(std::string)));
}

/// The decimal text of an unsigned 64-bit number, which is the form in which WMI holds one.
std::optional<_variant_t> Uint64Text(const std::string& text) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return TextVariant(base::ToWide(text));
}

}  // namespace

bool WmiConnector::Update::IsUsable(const DataTable* updates) {
    return updates != nullptr && !updates->Empty() &&
           updates->begin()->Size() == updates->GetColumnNames().size();
}

WmiConnector::Update::Update(const WmiConnector& connector, const DataTable& updates)
    : m_connector(connector), m_columns(updates.GetColumnNames()), m_row(*updates.begin()) {}

bool WmiConnector::Update::Apply(IWbemClassObject& object) {
    if (!m_isPrepared && !Prepare(object)) return false;
    m_isPrepared = true;
    for (std::size_t i = 0; i < m_changes.size(); ++i) {
        if (!Put(object, i)) return false;
    }
    return true;
}

/// Reads the types from the first object and converts every value before the first object is stored, so
/// that a value which does not fit leaves everything unchanged.
bool WmiConnector::Update::Prepare(IWbemClassObject& object) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        _variant_t old;
        CIMTYPE type = CIM_EMPTY;
        const HRESULT result = object.Get(base::ToWide(m_columns[i]).c_str(), 0, &old, &type, nullptr);
        if (FAILED(result)) {
            m_connector.m_logger->Debug(
                "could not find update property [%s] on the first object retrieved from the query",
                LogText::OneLine(m_columns[i]).c_str());
            m_connector.HandleWbemError(L"could not find an update property", result);
            return false;
        }
        const Variant& value = m_row.Get(i);
        if (m_connector.m_updatePolicy != UpdatePolicy::NullsAndArrays || !IsOther(type, value)) {
            m_changes.push_back(MakeChange(m_columns[i], type, value));
            continue;
        }
        Change change{m_columns[i], base::ToWide(m_columns[i]), _variant_t(), type};
        if (!MakeOther(change, value)) return Refuse(change);
        m_changes.push_back(std::move(change));
    }
    return true;
}

WmiConnector::Update::Change WmiConnector::Update::MakeChange(const std::string& label, CIMTYPE type,
                                                              const Variant& value) const {
    ICLogger& logger = *m_connector.m_logger;
    const std::string shown = LogText::OneLine(label);
    const char* const name = shown.c_str();
    Change change{label, base::ToWide(label), _variant_t(), type};
    if (IsInteger(type)) {
        change.value.llVal = value.GetLongLongValue();
        change.value.vt = VT_I8;
        change.type = CIM_SINT64;
        logger.Debug("Updating property [%s] CIM_SINT64 = value VT_I8[%lld]", name,
                     static_cast<long long>(change.value.llVal));
    } else if (IsReal(type)) {
        change.value.dblVal = value.GetDoubleValue();
        change.value.vt = VT_R8;
        change.type = CIM_REAL64;
        logger.Debug("Updating property [%s] CIM_REAL64 = value VT_R8[%f]", name, change.value.dblVal);
    } else if (type == CIM_STRING || type == CIM_DATETIME) {
        const std::string& text = value.GetStringValue();
        change.value = TextVariant(base::ToWide(text));
        logger.Debug("Updating property [%s] %s = value VT_BSTR[%s]", name,
                     type == CIM_STRING ? "CIM_STRING" : "CIM_DATETIME", LogText::OneLine(text).c_str());
    } else if (type == CIM_BOOLEAN) {
        const bool isTrue = value.GetBoolValue();
        change.value.boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
        change.value.vt = VT_BOOL;
        logger.Debug("Updating property [%s] CIM_BOOLEAN = value VT_BOOL[%s]", name,
                     StringUtils::BoolValAsString(isTrue));
    } else {
        change.value.vt = VT_NULL;
        change.type = CIM_ILLEGAL;
        logger.Debug("Updating property [%s] CIM_TYPE is unsupported", name);
    }
    return change;
}

bool WmiConnector::Update::MakeOther(Change& change, const Variant& value) const {
    if (value.IsNull()) {
        change.value.vt = VT_NULL;
        m_connector.m_logger->Debug("Updating property [%s] value VT_NULL",
                                    LogText::OneLine(change.label).c_str());
        return true;
    }
    if ((!IsArray(change.type) && change.type != CIM_UINT64) || !value.TypeIs(typeid(std::string)))
        return false;
    const std::string& text = value.GetStringValue();
    auto made = IsArray(change.type) ? ArrayOfLines(text, ElementType(change.type)) : Uint64Text(text);
    if (!made) return false;
    change.value = std::move(*made);
    m_connector.m_logger->Debug("Updating property [%s] value %s[%s]", LogText::OneLine(change.label).c_str(),
                                IsArray(change.type) ? "VT_ARRAY" : "VT_BSTR",
                                LogText::OneLine(text).c_str());
    return true;
}

bool WmiConnector::Update::Refuse(const Change& change) const {
    *m_connector.m_lastError = L"Cannot update property " + change.name + L": it does not take such a value";
    m_connector.m_lastErrorCode = static_cast<std::int32_t>(WBEM_E_TYPE_MISMATCH);
    m_connector.m_lastErrorDetails.clear();
    m_connector.m_logger->Error("%s", LogText::OneLine(base::ToUtf8(*m_connector.m_lastError)).c_str());
    return false;
}

bool WmiConnector::Update::Put(IWbemClassObject& object, std::size_t position) {
    Change& change = m_changes[position];
    const HRESULT result = object.Put(change.name.c_str(), 0, &change.value, change.type);
    if (FAILED(result)) {
        m_connector.m_logger->Debug("could not set property [%s] on object %d, hr = 0x%08x",
                                    LogText::OneLine(change.label).c_str(), static_cast<int>(position),
                                    static_cast<unsigned int>(result));
        m_connector.HandleWbemError(L"could not set property", result);
        return false;
    }
    m_connector.m_logger->Debug("Put property [%s] value [%s]", LogText::OneLine(change.label).c_str(),
                                LogText::OneLine(Describe(change.value, change.type)).c_str());
    return true;
}

bool WmiConnector::ExecuteUpdateFirst(const std::wstring& wql, const DataTable* updates, DataTable* results) {
    return ExecuteUpdateWithPolicy(
        wql, updates, [] { return false; }, results);
}

bool WmiConnector::ExecuteUpdateAll(const std::wstring& wql, const DataTable* updates, DataTable* results) {
    return ExecuteUpdateWithPolicy(
        wql, updates, [] { return true; }, results);
}

bool WmiConnector::ExecuteUpdateWithPolicy(const std::wstring& wql, const DataTable* updates,
                                           const std::function<bool()>& continuationPolicy,
                                           DataTable* results) {
    if (!CheckConnected("Cannot execute WMI query as WmiConnector is not connected")) return false;
    if (!Update::IsUsable(updates)) {
        *m_lastError = L"Cannot execute WMI update without a row of a value for each column";
        m_lastErrorCode = static_cast<std::int32_t>(WBEM_E_INVALID_PARAMETER);
        m_lastErrorDetails.clear();
        m_logger->Error("%s", LogText::OneLine(base::ToUtf8(*m_lastError)).c_str());
        return false;
    }
    const Operation operation(*this);
    const auto objects = StartQuery(wql);
    if (objects == nullptr) return false;
    Update update(*this, *updates);
    WmiObjects next;
    for (;;) {
        const HRESULT result = objects->Next(1, next);
        if (FAILED(result)) {
            HandleWbemError(L"enumerating WMI result", result);
            return false;
        }
        if (next.empty()) {
            m_logger->Debug("nothing returned by the query");
            return true;
        }
        if (!update.Apply(*next.front()) || !StoreObject(next.front(), results)) return false;
        if (!continuationPolicy()) {
            m_logger->Debug("continuationPolicy() said stop");
            return true;
        }
    }
}

bool WmiConnector::StoreObject(const CComPtr<IWbemClassObject>& object, DataTable* results) {
    m_logger->Debug("Putting instance");
    const HRESULT result = m_caller->Run([services = m_services->reference, object] {
        return services->PutInstance(object, 0, nullptr, nullptr);
    });
    if (FAILED(result)) {
        HandleWbemError(L"failed to PutInstance after updates applied", result);
        return false;
    }
    m_logger->Debug("Instance put");
    if (AccumulateWmiClassObject(object, results, nullptr, false)) return true;
    m_logger->Debug("AccumulateWmiClassObject returned false");
    return false;
}

}  // namespace quillon
