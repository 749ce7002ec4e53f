#pragma once

/// The part of <wbemidl.h>, <oleauto.h> and <objbase.h> that the library uses, with the
/// system's names and values. A LONG has 32 bits here too; a `long` need not.

#include <cstdint>

#include "quillon/WindowsTypes.h"

namespace quillon::windows {

using ULONG = std::uint32_t;
using LONG = std::int32_t;
using LCID = std::uint32_t;
using CIMTYPE = long;

#define SUCCEEDED(code) (static_cast<HRESULT>(code) >= 0)
#define FAILED(code) (static_cast<HRESULT>(code) < 0)

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);
inline constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000B);

enum WBEMSTATUS : HRESULT {
    WBEM_S_NO_ERROR = 0,
    WBEM_S_FALSE = 1,
    WBEM_S_TIMEDOUT = 0x40004,
    WBEM_E_FAILED = static_cast<HRESULT>(0x80041001),
    WBEM_E_NOT_FOUND = static_cast<HRESULT>(0x80041002),
    WBEM_E_ACCESS_DENIED = static_cast<HRESULT>(0x80041003),
    WBEM_E_PROVIDER_FAILURE = static_cast<HRESULT>(0x80041004),
    WBEM_E_TYPE_MISMATCH = static_cast<HRESULT>(0x80041005),
    WBEM_E_OUT_OF_MEMORY = static_cast<HRESULT>(0x80041006),
    WBEM_E_INVALID_PARAMETER = static_cast<HRESULT>(0x80041008),
    WBEM_E_NOT_SUPPORTED = static_cast<HRESULT>(0x8004100C),
    WBEM_E_INVALID_NAMESPACE = static_cast<HRESULT>(0x8004100E),
    WBEM_E_INVALID_OBJECT = static_cast<HRESULT>(0x8004100F),
    WBEM_E_INVALID_CLASS = static_cast<HRESULT>(0x80041010),
    WBEM_E_INVALID_QUERY = static_cast<HRESULT>(0x80041017),
    WBEM_E_INVALID_QUERY_TYPE = static_cast<HRESULT>(0x80041018),
    WBEM_E_PROVIDER_NOT_CAPABLE = static_cast<HRESULT>(0x80041024),
    WBEM_E_INVALID_METHOD = static_cast<HRESULT>(0x8004102E),
    WBEM_E_INVALID_METHOD_PARAMETERS = static_cast<HRESULT>(0x8004102F),
    WBEM_E_READ_ONLY = static_cast<HRESULT>(0x80041030),
    WBEM_E_VALUE_OUT_OF_RANGE = static_cast<HRESULT>(0x80041031),
    WBEM_E_INVALID_OBJECT_PATH = static_cast<HRESULT>(0x8004103A),
};

enum WBEM_GENERIC_FLAG_TYPE {
    WBEM_FLAG_RETURN_WBEM_COMPLETE = 0,
    WBEM_FLAG_RETURN_IMMEDIATELY = 0x10,
    WBEM_FLAG_FORWARD_ONLY = 0x20,
};
enum WBEM_CONNECT_OPTIONS { WBEM_FLAG_CONNECT_USE_MAX_WAIT = 0x80 };
enum WBEM_CONDITION_FLAG_TYPE {
    WBEM_FLAG_ALWAYS = 0,
    WBEM_FLAG_SYSTEM_ONLY = 0x30,
    WBEM_FLAG_NONSYSTEM_ONLY = 0x40,
};
enum WBEM_TIMEOUT_TYPE : LONG { WBEM_NO_WAIT = 0, WBEM_INFINITE = -1 };

enum CIMTYPE_ENUMERATION {
    CIM_EMPTY = 0,
    CIM_SINT16 = 2,
    CIM_SINT32 = 3,
    CIM_REAL32 = 4,
    CIM_REAL64 = 5,
    CIM_STRING = 8,
    CIM_BOOLEAN = 11,
    CIM_OBJECT = 13,
    CIM_SINT8 = 16,
    CIM_UINT8 = 17,
    CIM_UINT16 = 18,
    CIM_UINT32 = 19,
    CIM_SINT64 = 20,
    CIM_UINT64 = 21,
    CIM_DATETIME = 101,
    CIM_REFERENCE = 102,
    CIM_CHAR16 = 103,
    CIM_ILLEGAL = 4095,
    CIM_FLAG_ARRAY = 8192,
};

// --- Variants and arrays, with the system's results ---

inline constexpr LCID LOCALE_INVARIANT = 0x7f;

/// `target` may be `source`. Knows the types of VARENUM but arrays; texts are written
/// and read without regard to the locale. DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW.
HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID locale, std::uint16_t flags,
                            VARTYPE type);

/// Null when there is no memory or such an array cannot be.
SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
/// Elements are cleared. Null is nothing.
HRESULT SafeArrayDestroy(SAFEARRAY* array);
HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
HRESULT SafeArrayGetLBound(SAFEARRAY* array, unsigned int dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, unsigned int dimension, LONG* bound);
/// A copy of the element at `*index`, which the caller clears. DISP_E_BADINDEX.
HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element);
/// Stores a copy. A text or reference is itself `element`, another value is behind it.
HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element);

// --- The interfaces ---

/// Objects count their references; methods run on any thread.
struct IUnknown {
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

struct IWbemContext;
struct IWbemCallResult;

struct IWbemClassObject : IUnknown {
    /// `type` and `flavor` may be null.
    virtual HRESULT Get(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) = 0;
    virtual HRESULT Put(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE type) = 0;
    virtual HRESULT GetNames(const wchar_t* qualifier, LONG flags, VARIANT* qualifierValue,
                             SAFEARRAY** names) = 0;
    virtual HRESULT SpawnInstance(LONG flags, IWbemClassObject** instance) = 0;
    /// A signature that has no parameters comes back null.
    virtual HRESULT GetMethod(const wchar_t* name, LONG flags, IWbemClassObject** in,
                              IWbemClassObject** out) = 0;

protected:
    ~IWbemClassObject() = default;
};

struct IEnumWbemClassObject : IUnknown {
    /// S_FALSE when fewer came because there are no more, WBEM_S_TIMEDOUT because the
    /// time was up; `returned` objects are there in either case.
    virtual HRESULT Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) = 0;

protected:
    ~IEnumWbemClassObject() = default;
};

struct IWbemServices : IUnknown {
    virtual HRESULT GetObject(BSTR path, LONG flags, IWbemContext* context, IWbemClassObject** object,
                              IWbemCallResult** result) = 0;
    virtual HRESULT PutInstance(IWbemClassObject* instance, LONG flags, IWbemContext* context,
                                IWbemCallResult** result) = 0;
    virtual HRESULT ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                              IEnumWbemClassObject** objects) = 0;
    /// `in` and `out` may be null, and `*out` may come back null.
    virtual HRESULT ExecMethod(BSTR path, BSTR method, LONG flags, IWbemContext* context,
                               IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult** result) = 0;

protected:
    ~IWbemServices() = default;
};

struct IWbemLocator : IUnknown {
    virtual HRESULT ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags,
                                  BSTR authority, IWbemContext* context, IWbemServices** services) = 0;

protected:
    ~IWbemLocator() = default;
};

}  // namespace quillon::windows
