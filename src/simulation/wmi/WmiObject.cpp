#include "simulation/wmi/WmiObject.h"

#include <utility>

#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"

namespace quillon::simulation {

namespace {

/// Fills a variant that holds nothing; the system's own does not look at what was there before.
HRESULT Give(const VARIANT& value, VARIANT* target) {
    if (target == nullptr) return S_OK;
    VariantInit(target);
    // Some of the system's headers declare the source as one that might change.
    if (value.vt != VT_EMPTY) return VariantCopy(target, const_cast<VARIANT*>(&value));
    target->vt = VT_NULL;
    return S_OK;
}

constexpr VARIANT kNothing{};
constexpr LONG kSystemFlavor = 0x40;
/// Flags of GetNames, which choose properties by their origin.
constexpr LONG kOwnFlag = WBEM_FLAG_NONSYSTEM_ONLY;
constexpr LONG kSystemFlag = WBEM_FLAG_SYSTEM_ONLY;

}  // namespace

WmiObject::WmiObject(const std::shared_ptr<WmiState>& state, Kind kind, WmiSchemaPtr schema,
                     WmiShapePtr shape, WmiRowPtr row)
    : WbemObject(state),
      m_kind(kind),
      m_schema(std::move(schema)),
      m_shape(std::move(shape)),
      m_row(std::move(row)) {}

HRESULT WmiObject::Get(const wchar_t* name, LONG, VARIANT* value, CIMTYPE* type, LONG* flavor) {
    if (const auto code = State()->Begin(WmiCall::Get)) return *code;
    if (name == nullptr) return Code(WBEM_E_INVALID_PARAMETER);

    const std::lock_guard lock(State()->mutex);
    const WmiShape::Property* const property = m_shape->Find(name);
    if (property == nullptr) return GiveSystemProperty(name, value, type, flavor);
    if (type != nullptr) *type = property->type;
    if (flavor != nullptr) *flavor = 0;
    return Give((*m_row)[property->slot], value);
}

HRESULT WmiObject::GiveSystemProperty(const wchar_t* name, VARIANT* value, CIMTYPE* type,
                                      LONG* flavor) const {
    const auto position = FindSystemProperty(name);
    if (!position) return Code(WBEM_E_NOT_FOUND);
    if (type != nullptr) *type = SystemPropertyType(*position);
    if (flavor != nullptr) *flavor = kSystemFlavor;
    return Give(SystemPropertyValue(*position, {*m_schema, *m_shape, *m_row, IsClass()}), value);
}

HRESULT WmiObject::Put(const wchar_t* name, LONG, VARIANT* value, CIMTYPE type) {
    if (const auto code = State()->Begin(WmiCall::Put)) return *code;
    if (name == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    if (FindSystemProperty(name)) return Code(WBEM_E_READ_ONLY);

    WmiRowPtr old;  // outlives the lock: what it held may be anybody's
    const std::lock_guard lock(State()->mutex);
    old = m_row;
    const VARIANT& given = value == nullptr ? kNothing : *value;
    const WmiShape::Property* const property = m_shape->Find(name);
    if (property != nullptr) return Replace(*property, given);
    return IsClass() ? Append(name, given, type) : Code(WBEM_E_NOT_FOUND);
}

HRESULT WmiObject::Replace(const WmiShape::Property& property, const VARIANT& value) {
    _variant_t converted;
    if (const HRESULT result = Coerce(value, property.type, converted); FAILED(result)) return result;
    auto row = std::make_shared<WmiRow>(*m_row);
    (*row)[property.slot] = std::move(converted);
    m_row = std::move(row);
    return S_OK;
}

HRESULT WmiObject::Append(const wchar_t* name, const VARIANT& value, CIMTYPE type) {
    _variant_t converted;
    if (const HRESULT result = Coerce(value, type, converted); FAILED(result)) return result;
    auto row = std::make_shared<WmiRow>(*m_row);
    auto properties = m_shape->Properties();
    properties.push_back({name, type, row->size()});
    row->push_back(std::move(converted));
    m_shape = std::make_shared<const WmiShape>(std::move(properties), m_shape->ShowsPath());
    m_row = std::move(row);
    return S_OK;
}

HRESULT WmiObject::GetNames(const wchar_t* qualifier, LONG flags, VARIANT*, SAFEARRAY** names) {
    if (const auto code = State()->Begin(WmiCall::GetNames)) return *code;
    const bool known = flags == WBEM_FLAG_ALWAYS || flags == kOwnFlag || flags == kSystemFlag;
    if (qualifier != nullptr || names == nullptr || !known) return Code(WBEM_E_INVALID_PARAMETER);

    const std::lock_guard lock(State()->mutex);
    *names = m_shape->Names(flags != kOwnFlag, flags != kSystemFlag);
    return *names == nullptr ? Code(WBEM_E_OUT_OF_MEMORY) : S_OK;
}

HRESULT WmiObject::SpawnInstance(LONG, IWbemClassObject** instance) {
    if (const auto code = State()->Begin(WmiCall::SpawnInstance)) return *code;
    if (instance == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    if (!IsClass()) return Code(WBEM_E_NOT_SUPPORTED);

    const std::lock_guard lock(State()->mutex);
    *instance = new WmiObject(State(), Kind::Instance, m_schema, m_shape, m_row);
    return S_OK;
}

HRESULT WmiObject::GetMethod(const wchar_t* name, LONG, IWbemClassObject** in, IWbemClassObject** out) {
    if (const auto code = State()->Begin(WmiCall::GetMethod)) return *code;
    if (name == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    if (!IsClass()) return Code(WBEM_E_NOT_SUPPORTED);
    const auto signature = m_schema->methods.find(std::wstring_view(name));
    if (signature == m_schema->methods.end()) return Code(WBEM_E_NOT_FOUND);
    GiveClass(signature->second.in, in);
    return GiveClass(signature->second.out, out);
}

HRESULT WmiObject::GiveClass(const WmiSchemaPtr& schema, IWbemClassObject** object) const {
    if (object == nullptr) return S_OK;
    *object = nullptr;
    if (schema == nullptr) return S_OK;
    *object = new WmiObject(State(), Kind::Class, schema, schema->shape, schema->defaults);
    return S_OK;
}

bool WmiObject::ShowsPath() const {
    const std::lock_guard lock(State()->mutex);
    return m_shape->ShowsPath();
}

WmiRowPtr WmiObject::Row() const {
    const std::lock_guard lock(State()->mutex);
    return m_row;
}

}  // namespace quillon::simulation
