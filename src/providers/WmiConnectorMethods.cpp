#include <memory>
#include <optional>

#include "base/Utf.h"
#include "platform/TextApi.h"
#include "providers/WmiArrayValue.h"
#include "providers/WmiCimTypes.h"
#include "providers/WmiEnumeration.h"
#include "providers/WmiOperation.h"
#include "providers/WmiOwners.h"
#include "providers/WmiServices.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"
#include "quillon/WmiConnector.h"

namespace quillon {

namespace {

using base::ToUtf8;
using platform::CComPtr;

constexpr const char* kNotConnected = "Cannot execute WMI method as WmiConnector is not connected";

/// A text of an object, empty when it holds none.
HRESULT ReadText(IWbemClassObject& object, const wchar_t* property, std::wstring& text) {
    _variant_t value;
    const HRESULT result = object.Get(property, 0, &value, nullptr, nullptr);
    if (SUCCEEDED(result) && value.vt == VT_BSTR) text = platform::BstrText(value.bstrVal);
    return result;
}

/// What a look-up of a class that may be left behind needs and gives.
struct Definition {
    CComPtr<IWbemServices> services;
    OwnedBstr className;
    CComPtr<IWbemClassObject> object;

    HRESULT Make() {
        return ResultOf(services->GetObject(className.get(), 0, nullptr, &object, nullptr), object);
    }
};

/// The same for the call of a method.
struct Method {
    CComPtr<IWbemServices> services;
    OwnedBstr path, name;
    CComPtr<IWbemClassObject> in, out;

    HRESULT Make() { return services->ExecMethod(path.get(), name.get(), 0, nullptr, in, &out, nullptr); }
};

bool IsSettable(long cimType) {
    return cimType != CIM_OBJECT && cimType != CIM_REFERENCE && cimType != CIM_ILLEGAL &&
           cimType != CIM_FLAG_ARRAY;
}

/// A value as WMI takes it for a parameter; nothing when it is none of the type.
std::optional<_variant_t> ParameterValue(long cimType, const Variant& value, const std::string& text,
                                         WmiConnector::UpdatePolicy policy) {
    if (policy == WmiConnector::UpdatePolicy::NullsAndArrays) {
        _variant_t null;
        null.vt = VT_NULL;
        if (value.IsNull()) return null;
        if (IsArray(cimType)) return ArrayOfLines(text, ElementType(cimType));
    }
    return TextVariant(base::ToWide(text));
}

}  // namespace

bool WmiConnector::ExecuteStaticMethod(const std::wstring& className, const std::wstring& methodName,
                                       const MethodParameters& params, DataTable* results) {
    m_logger->Debug("Executing static WMI method '%s' on '%s'", LogText::OneLine(ToUtf8(methodName)).c_str(),
                    LogText::OneLine(ToUtf8(className)).c_str());
    const Operation operation(*this);
    return CheckConnected(kNotConnected) &&
           CallMethod(className, className, methodName, params, results, nullptr);
}

bool WmiConnector::ExecuteInstanceMethod(const std::wstring& wql, const std::wstring& methodName,
                                         bool allResults, const MethodParameters& params,
                                         DataTable* results) {
    m_logger->Debug("Executing instance WMI method '%s' on %s of '%s'",
                    LogText::OneLine(ToUtf8(methodName)).c_str(), allResults ? "all results" : "first result",
                    LogText::OneLine(ToUtf8(wql)).c_str());
    if (!CheckConnected(kNotConnected)) return false;
    const Operation operation(*this);
    const auto objects = StartQuery(wql);
    if (objects == nullptr) return false;
    WmiObjects next;
    do {
        const HRESULT result = objects->Next(1, next);
        if (FAILED(result)) {
            HandleWbemError(L"enumerating WMI result", result);
            return false;
        }
        if (next.empty()) return true;
        if (!ExecuteInstanceMethodInternal(next.front(), methodName, params, results)) return false;
    } while (allResults);
    return true;
}

bool WmiConnector::ExecuteInstanceMethodInternal(CComPtr<IWbemClassObject>& object,
                                                 const std::wstring& methodName,
                                                 const MethodParameters& params, DataTable* results) {
    std::wstring path, className;
    HRESULT result = ReadText(*object, L"__PATH", path);
    if (FAILED(result)) {
        HandleWbemError(L"deriving __PATH property for target query result", result);
        return false;
    }
    m_logger->Debug("Executing instance WMI method '%s' on object path '%s'",
                    LogText::OneLine(ToUtf8(methodName)).c_str(), LogText::OneLine(ToUtf8(path)).c_str());
    result = ReadText(*object, L"__CLASS", className);
    if (FAILED(result)) {
        HandleWbemError(L"deriving __CLASS property for target query result", result);
        return false;
    }
    return CallMethod(className, path, methodName, params, results, path.data());
}

bool WmiConnector::CallMethod(const std::wstring& className, const std::wstring& path,
                              const std::wstring& methodName, const MethodParameters& params,
                              DataTable* results, wchar_t* objectPath) {
    const auto check = [this](HRESULT result, const std::wstring& context) {
        if (FAILED(result)) HandleWbemError(context, result);
        return SUCCEEDED(result);
    };
    const auto definition = std::make_shared<Definition>();
    definition->services = m_services->reference;
    definition->className = ToBstr(className);
    HRESULT result = m_caller->Run([definition] { return definition->Make(); });
    if (!check(result, L"getting reference to class " + className)) return false;
    const auto method = std::make_shared<Method>();
    CComPtr<IWbemClassObject> inDefinition;
    result = definition->object->GetMethod(methodName.c_str(), 0, &inDefinition, nullptr);
    if (!check(result, L"getting metadata for method " + methodName)) return false;
    if (m_refusesUnknown && !KnowsParameters(methodName, inDefinition, params)) return false;
    if (!SetWmiParametersFromUserParameters(methodName, inDefinition, method->in, params)) return false;
    method->services = m_services->reference;
    method->path = ToBstr(path);
    method->name = ToBstr(methodName);
    result = m_caller->Run([method] { return method->Make(); });
    if (!check(result, L"executing method " + methodName)) return false;
    if (method->out != nullptr) AccumulateWmiClassObject(method->out, results, objectPath, false);
    return true;
}

bool WmiConnector::KnowsParameters(const std::wstring& methodName, IWbemClassObject* inDefinition,
                                   const MethodParameters& params) const {
    for (const Variant& value : params.scalars) {
        _variant_t unused;
        const std::wstring name = base::ToWide(value.GetName());
        if (inDefinition != nullptr &&
            SUCCEEDED(inDefinition->Get(name.c_str(), 0, &unused, nullptr, nullptr)))
            continue;
        m_lastErrorDetails.clear();
        *m_lastError = L"Method " + methodName + L" has no parameter " + name;
        m_lastErrorCode = static_cast<std::int32_t>(WBEM_E_INVALID_METHOD_PARAMETERS);
        m_logger->Error("%s", LogText::OneLine(ToUtf8(*m_lastError)).c_str());
        return false;
    }
    return true;
}

bool WmiConnector::SetWmiParametersFromUserParameters(const std::wstring& methodName,
                                                      CComPtr<IWbemClassObject>& inDefinition,
                                                      CComPtr<IWbemClassObject>& inInstance,
                                                      const MethodParameters& params) const {
    if (inDefinition == nullptr) return true;
    HRESULT result = ResultOf(inDefinition->SpawnInstance(0, &inInstance), inInstance);
    if (FAILED(result)) {
        HandleWbemError(L"instantiating input parameters for method " + methodName, result);
        return false;
    }
    WmiNames names;
    result = names.Read(*inDefinition, WBEM_FLAG_NONSYSTEM_ONLY);
    if (FAILED(result)) {
        HandleWbemError(L"retrieving input parameter definitions for method " + methodName, result);
        return false;
    }
    for (LONG i = names.First(); i <= names.Last(); ++i) {
        OwnedBstr name;
        CIMTYPE type = CIM_EMPTY;
        _variant_t unused;
        if (FAILED(names.Get(i, name)) || name == nullptr) continue;
        if (FAILED(inDefinition->Get(name.get(), 0, &unused, &type, nullptr))) continue;
        m_logger->Trace("%s Parameter name is %s - CIM type is %d", " ->",
                        LogText::OneLine(ToUtf8(name.get())).c_str(), static_cast<int>(type));
        SetWmiParameterFromUserParameters(inInstance, name.get(), type, params);
    }
    return true;
}

void WmiConnector::SetWmiParameterFromUserParameters(CComPtr<IWbemClassObject>& inInstance,
                                                     const std::wstring& name, long cimType,
                                                     const MethodParameters& params) const {
    const std::string wanted = ToUtf8(name);
    for (const Variant& value : params.scalars) {
        if (!StringUtils::CompareCaseInsensitive(value.GetName(), wanted)) continue;
        SetWmiParameterFromUserParameter(inInstance, name, cimType, value);
        return;
    }
}

void WmiConnector::SetWmiParameterFromUserParameter(CComPtr<IWbemClassObject>& inInstance,
                                                    const std::wstring& name, long cimType,
                                                    const Variant& value) const {
    if (!IsSettable(cimType)) {
        m_logger->Warn("Data-type for parameter '%s' is not supported for WMI method invocation; skipping",
                       LogText::OneLine(ToUtf8(name)).c_str());
        return;
    }
    const std::string text = value.AsString();
    auto converted = ParameterValue(cimType, value, text, m_updatePolicy);
    if (!converted || FAILED(inInstance->Put(name.c_str(), 0, &*converted, cimType))) {
        m_logger->Warn("Could not apply parameter value of '%s' to parameter '%s'",
                       LogText::OneLine(ToUtf8(name)).c_str(), LogText::OneLine(text).c_str());
    }
}

}  // namespace quillon
