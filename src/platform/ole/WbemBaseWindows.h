#pragma once

#include "platform/ole/WbemTypes.h"

namespace quillon::platform {

inline constexpr HRESULT kNotSupported = static_cast<HRESULT>(WBEM_E_NOT_SUPPORTED);

/// The interface, of which everything that the library does not use is answered.
template <class Interface>
class WbemMembers;

template <>
class WbemMembers<IWbemLocator> : public IWbemLocator {};

template <>
class WbemMembers<IEnumWbemClassObject> : public IEnumWbemClassObject {
public:
    HRESULT Reset() override { return kNotSupported; }
    HRESULT NextAsync(ULONG, IWbemObjectSink*) override { return kNotSupported; }
    HRESULT Clone(IEnumWbemClassObject**) override { return kNotSupported; }
    HRESULT Skip(LONG, ULONG) override { return kNotSupported; }
};

template <>
class WbemMembers<IWbemClassObject> : public IWbemClassObject {
public:
    HRESULT GetQualifierSet(IWbemQualifierSet**) override { return kNotSupported; }
    HRESULT Delete(LPCWSTR) override { return kNotSupported; }
    HRESULT BeginEnumeration(LONG) override { return kNotSupported; }
    HRESULT Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return kNotSupported; }
    HRESULT EndEnumeration() override { return kNotSupported; }
    HRESULT GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return kNotSupported; }
    HRESULT Clone(IWbemClassObject**) override { return kNotSupported; }
    HRESULT GetObjectText(LONG, BSTR*) override { return kNotSupported; }
    HRESULT SpawnDerivedClass(LONG, IWbemClassObject**) override { return kNotSupported; }
    HRESULT CompareTo(LONG, IWbemClassObject*) override { return kNotSupported; }
    HRESULT GetPropertyOrigin(LPCWSTR, BSTR*) override { return kNotSupported; }
    HRESULT InheritsFrom(LPCWSTR) override { return kNotSupported; }
    HRESULT PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override { return kNotSupported; }
    HRESULT DeleteMethod(LPCWSTR) override { return kNotSupported; }
    HRESULT BeginMethodEnumeration(LONG) override { return kNotSupported; }
    HRESULT NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override { return kNotSupported; }
    HRESULT EndMethodEnumeration() override { return kNotSupported; }
    HRESULT GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return kNotSupported; }
    HRESULT GetMethodOrigin(LPCWSTR, BSTR*) override { return kNotSupported; }
};

template <>
class WbemMembers<IWbemServices> : public IWbemServices {
public:
    HRESULT OpenNamespace(BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override {
        return kNotSupported;
    }
    HRESULT CancelAsyncCall(IWbemObjectSink*) override { return kNotSupported; }
    HRESULT QueryObjectSink(LONG, IWbemObjectSink**) override { return kNotSupported; }
    HRESULT GetObjectAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return kNotSupported; }
    HRESULT PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return kNotSupported;
    }
    HRESULT PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT DeleteClass(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return kNotSupported; }
    HRESULT DeleteClassAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return kNotSupported; }
    HRESULT CreateClassEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return kNotSupported;
    }
    HRESULT CreateClassEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT DeleteInstance(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return kNotSupported; }
    HRESULT DeleteInstanceAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT CreateInstanceEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return kNotSupported;
    }
    HRESULT CreateInstanceEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT ExecQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT ExecNotificationQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return kNotSupported;
    }
    HRESULT ExecNotificationQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return kNotSupported;
    }
    HRESULT ExecMethodAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemObjectSink*) override {
        return kNotSupported;
    }
};

/// What an implementation of the interface begins with.
template <class Interface>
class WbemBase : public WbemMembers<Interface> {
public:
    HRESULT QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool isKnown = id == __uuidof(Interface) || id == __uuidof(IUnknown);
        *object = isKnown ? static_cast<Interface*>(this) : nullptr;
        if (isKnown) this->AddRef();
        return isKnown ? S_OK : E_NOINTERFACE;
    }
};

}  // namespace quillon::platform
