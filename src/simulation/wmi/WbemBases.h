#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "platform/Wbem.h"
#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiState.h"

namespace quillon::simulation {

#ifdef _WIN32

/// The interface, of which everything that the library does not use is answered.
template <class Interface>
class WbemBase;

template <>
class WbemBase<IWbemLocator> : public IWbemLocator {};

template <>
class WbemBase<IEnumWbemClassObject> : public IEnumWbemClassObject {
public:
    HRESULT Reset() override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT NextAsync(ULONG, IWbemObjectSink*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT Clone(IEnumWbemClassObject**) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT Skip(LONG, ULONG) override { return Code(WBEM_E_NOT_SUPPORTED); }
};

template <>
class WbemBase<IWbemClassObject> : public IWbemClassObject {
public:
    HRESULT GetQualifierSet(IWbemQualifierSet**) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT Delete(LPCWSTR) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT BeginEnumeration(LONG) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT EndEnumeration() override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT Clone(IWbemClassObject**) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT GetObjectText(LONG, BSTR*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT SpawnDerivedClass(LONG, IWbemClassObject**) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT CompareTo(LONG, IWbemClassObject*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT GetPropertyOrigin(LPCWSTR, BSTR*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT InheritsFrom(LPCWSTR) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT DeleteMethod(LPCWSTR) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT BeginMethodEnumeration(LONG) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT EndMethodEnumeration() override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT GetMethodOrigin(LPCWSTR, BSTR*) override { return Code(WBEM_E_NOT_SUPPORTED); }
};

template <>
class WbemBase<IWbemServices> : public IWbemServices {
public:
    HRESULT OpenNamespace(BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT CancelAsyncCall(IWbemObjectSink*) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT QueryObjectSink(LONG, IWbemObjectSink**) override { return Code(WBEM_E_NOT_SUPPORTED); }
    HRESULT GetObjectAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT DeleteClass(BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT DeleteClassAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT CreateClassEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT CreateClassEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT DeleteInstance(BSTR, LONG, IWbemContext*, IWbemCallResult**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT DeleteInstanceAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT CreateInstanceEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT CreateInstanceEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT ExecQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT ExecNotificationQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT ExecNotificationQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
    HRESULT ExecMethodAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemObjectSink*) override {
        return Code(WBEM_E_NOT_SUPPORTED);
    }
};

#else

template <class Interface>
using WbemBase = Interface;

#endif

/// Begins with one reference, which is its maker's, and goes with the last one. Keeps the repository's
/// state alive, and stands in its count of live objects.
template <class Interface>
class WbemObject : public WbemBase<Interface> {
public:
    explicit WbemObject(std::shared_ptr<WmiState> state) : m_state(std::move(state)) {
        ++m_state->liveObjects;
    }
    WbemObject(const WbemObject&) = delete;
    WbemObject& operator=(const WbemObject&) = delete;

    ULONG AddRef() override { return ++m_references; }
    ULONG Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

#ifdef _WIN32
    HRESULT QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = id == __uuidof(Interface) || id == __uuidof(IUnknown);
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
#endif

protected:
    virtual ~WbemObject() { --m_state->liveObjects; }

    const std::shared_ptr<WmiState>& State() const { return m_state; }

private:
    const std::shared_ptr<WmiState> m_state;
    std::atomic<ULONG> m_references{1};
};

}  // namespace quillon::simulation
