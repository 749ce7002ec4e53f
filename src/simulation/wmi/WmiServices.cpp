#include "simulation/wmi/WmiServices.h"

#include <exception>
#include <utility>

#include "base/Utf.h"
#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"
#include "simulation/wmi/WmiEnumerator.h"
#include "simulation/wmi/WmiErrorDetails.h"
#include "simulation/wmi/WmiObject.h"
#include "simulation/wmi/WmiTarget.h"
#include "simulation/wql/WqlQuery.h"

namespace quillon::simulation {

namespace {

/// The parameters that `in` holds, or the defaults when it is null. WBEM_E_INVALID_METHOD_PARAMETERS when
/// they are those of another method.
HRESULT ReadParameters(const WmiSignature& signature, IWbemClassObject* in, WmiValues& values) {
    const auto* const given = dynamic_cast<const WmiObject*>(in);
    if (in != nullptr && (given == nullptr || given->Schema() != signature.in)) {
        return Code(WBEM_E_INVALID_METHOD_PARAMETERS);
    }
    if (signature.in == nullptr) return S_OK;
    const WmiRowPtr row = given == nullptr ? signature.in->defaults : given->Row();
    for (const WmiShape::Property& property : signature.in->shape->Properties()) {
        const _variant_t& value = (*row)[property.slot];
        if (value.vt != VT_EMPTY && value.vt != VT_NULL) values.emplace_back(property.name, value);
    }
    return S_OK;
}

/// Makes the row of results, null when the method has none.
HRESULT RunBody(const WmiSignature& signature, const std::wstring& path, const WmiValues& in,
                WmiRowPtr& results) {
    try {
        WmiValues out;
        const HRESULT result = signature.method.body ? signature.method.body(path, in, out) : S_OK;
        if (SUCCEEDED(result) && signature.out != nullptr) results = MakeRow(*signature.out, out);
        return result;
    } catch (const std::exception& failure) {
        NoteErrorDetails(L"Operation: ExecMethod; ParameterInfo: " + path + L"; Description: " +
                         base::ToWide(failure.what()));
        return Code(WBEM_E_PROVIDER_FAILURE);
    }
}

}  // namespace

WmiServices::WmiServices(const std::shared_ptr<WmiState>& state, std::wstring nameSpace)
    : WbemObject(state), m_nameSpace(std::move(nameSpace)) {}

HRESULT WmiServices::GetObject(BSTR path, LONG, IWbemContext*, IWbemClassObject** object, IWbemCallResult**) {
    if (const auto code = State()->Begin(WmiCall::GetObject)) return *code;
    if (path == nullptr || object == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    *object = nullptr;
    WmiTarget target;
    const HRESULT result = FindTarget(*State(), m_nameSpace, View(path), WmiDetail::All, target);
    if (FAILED(result)) return result;

    const WmiSchema& schema = *target.schema;
    const bool isClass = target.row == nullptr;
    *object = new WmiObject(State(), isClass ? WmiObject::Kind::Class : WmiObject::Kind::Instance,
                            target.schema, schema.shape, isClass ? schema.defaults : target.row);
    return S_OK;
}

HRESULT WmiServices::PutInstance(IWbemClassObject* instance, LONG, IWbemContext*, IWbemCallResult**) {
    if (const auto code = State()->Begin(WmiCall::PutInstance)) return *code;
    if (instance == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    const auto* const given = dynamic_cast<const WmiObject*>(instance);
    if (given == nullptr || given->IsClass() || given->Schema()->IsParameters() || !given->ShowsPath()) {
        return Code(WBEM_E_INVALID_OBJECT);
    }
    if (given->Schema()->live) return Code(WBEM_E_PROVIDER_NOT_CAPABLE);
    return Store(given->Schema(), given->Row());
}

HRESULT WmiServices::Store(const WmiSchemaPtr& schema, WmiRowPtr row) {
    const std::lock_guard lock(State()->mutex);
    WmiTable* const table = State()->FindTable(m_nameSpace, schema->className);
    if (table == nullptr) return Code(WBEM_E_INVALID_CLASS);
    if (table->Schema() != schema) return Code(WBEM_E_INVALID_OBJECT);  // of a class that was replaced
    return table->Put(std::move(row)) ? S_OK : Code(WBEM_E_INVALID_OBJECT);
}

HRESULT WmiServices::ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext*,
                               IEnumWbemClassObject** objects) {
    if (const auto code = State()->Begin(WmiCall::ExecQuery)) return *code;
    if (language == nullptr || query == nullptr || objects == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    *objects = nullptr;
    if (!NameEqual()(View(language), L"WQL")) return Code(WBEM_E_INVALID_QUERY_TYPE);
    WqlQuery parsed;
    if (const HRESULT result = parsed.Parse(View(query)); FAILED(result)) {
        NoteErrorDetails(L"Operation: ExecQuery; ParameterInfo: " + std::wstring(View(query)));
        return result;
    }

    platform::CComPtr<IEnumWbemClassObject> owner;
    auto* const enumerator = new WmiEnumerator(State(), m_nameSpace, std::move(parsed));
    owner.Attach(enumerator);
    const bool tellsLater = (flags & WBEM_FLAG_RETURN_IMMEDIATELY) != 0;
    if (!tellsLater) {
        if (const HRESULT result = enumerator->Provide(); FAILED(result)) return result;
    }
    *objects = owner.Detach();
    return S_OK;
}

HRESULT WmiServices::ExecMethod(BSTR path, BSTR method, LONG, IWbemContext*, IWbemClassObject* in,
                                IWbemClassObject** out, IWbemCallResult**) {
    if (const auto code = State()->Begin(WmiCall::ExecMethod)) return *code;
    if (path == nullptr || method == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    if (out != nullptr) *out = nullptr;
    WmiTarget target;
    const HRESULT found = FindTarget(*State(), m_nameSpace, View(path), WmiDetail::Keys, target);
    if (FAILED(found)) return found;
    const auto entry = target.schema->methods.find(View(method));
    if (entry == target.schema->methods.end()) return Code(WBEM_E_INVALID_METHOD);
    const WmiSignature& signature = entry->second;
    if (target.row == nullptr && !signature.method.isStatic) return Code(WBEM_E_INVALID_METHOD);

    WmiValues values;
    if (const HRESULT result = ReadParameters(signature, in, values); FAILED(result)) return result;
    WmiRowPtr results;
    const HRESULT result = RunBody(signature, target.path, values, results);
    if (results == nullptr || out == nullptr) return result;
    const WmiSchemaPtr& shown = signature.out;
    *out = new WmiObject(State(), WmiObject::Kind::Instance, shown, shown->shape, std::move(results));
    return result;
}

}  // namespace quillon::simulation
