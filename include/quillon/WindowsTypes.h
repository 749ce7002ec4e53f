#pragma once

/// Declares the Windows types that the library's headers use, without <windows.h>, as names in
/// quillon::windows. On Windows they are the system's own and only declared here: include <windows.h>,
/// <oleauto.h> and <comutil.h>, before or after this header, to use them. Elsewhere this header defines the
/// part of them that the library uses.
///
/// Outside Windows the names are also global, as on Windows. Where another header brings Windows types of its
/// own (unixODBC, DirectX) that would make the names ambiguous: define QUILLON_NO_WINDOWS_NAMES before the
/// first header of the library then, and write windows::GUID. The macro also keeps away what the system's
/// headers may define on Windows: EVT_SUBSCRIBE_NOTIFY_ACTION and ATL::COleDateTime. It changes names only:
/// sources that define it and sources that do not can be linked together.

#include <cstdint>
#include <string>

#if defined(_WIN32)

struct _FILETIME;
using FILETIME = struct _FILETIME;
struct tagVARIANT;
using VARIANT = struct tagVARIANT;
using BSTR = wchar_t*;
class _variant_t;
class _bstr_t;
struct IWbemClassObject;
struct IWbemServices;
struct _GUID;
using GUID = struct _GUID;
struct _LUID;
using LUID = struct _LUID;
struct HINSTANCE__;
struct HKEY__;
#if !defined(NO_STRICT)
using HINSTANCE = HINSTANCE__*;
using HKEY = HKEY__*;
#endif
using HANDLE = void*;
struct _CERT_CONTEXT;
using CERT_CONTEXT = struct _CERT_CONTEXT;
struct _CRYPTOAPI_BLOB;
using CRYPTOAPI_BLOB = struct _CRYPTOAPI_BLOB;

namespace quillon::windows {

using ::_bstr_t;
using ::_variant_t;
using ::BSTR;
using ::CERT_CONTEXT;
using ::CRYPTOAPI_BLOB;
using ::FILETIME;
using ::GUID;
using ::HANDLE;
using ::IWbemClassObject;
using ::IWbemServices;
using ::LUID;
using ::VARIANT;
using HINSTANCE = ::HINSTANCE__*;
using HKEY = ::HKEY__*;

}  // namespace quillon::windows

#else

#include "quillon/detail/OleTypesLinux.h"

namespace quillon::windows {

struct FILETIME {
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

struct LUID {
    std::uint32_t LowPart;
    std::int32_t HighPart;
};

/// Identify a loaded module (by its base address) and an open registry key.
using HINSTANCE = struct HINSTANCE__*;
using HKEY = struct HKEY__*;
/// Identifies an open process, which the library has opened.
using HANDLE = void*;

/// Points to bytes, which it does not own.
struct CRYPTOAPI_BLOB {
    std::uint32_t cbData;
    std::uint8_t* pbData;
};

/// Holds the parts of a certificate. Names are encoded in DER; the serial number has its least
/// significant byte first. Both times are UTC.
struct CERT_INFO {
    CRYPTOAPI_BLOB SerialNumber;
    CRYPTOAPI_BLOB Issuer;
    CRYPTOAPI_BLOB Subject;
    FILETIME NotBefore;
    FILETIME NotAfter;
};

/// Holds a certificate in DER and its parts. Certificate makes and owns it.
struct CERT_CONTEXT {
    std::uint32_t dwCertEncodingType;  // 1, X509_ASN_ENCODING
    std::uint8_t* pbCertEncoded;
    std::uint32_t cbCertEncoded;
    CERT_INFO* pCertInfo;
};

}  // namespace quillon::windows

#endif

namespace quillon {

namespace windows {

/// Says why a subscription's callback is called; the values are those of the type of this name in
/// <winevt.h>.
enum EVT_SUBSCRIBE_NOTIFY_ACTION : std::int32_t {
    EvtSubscribeActionError = 0,
    EvtSubscribeActionDeliver = 1
};

}  // namespace windows

/// Holds an OLE date, which is the days since 1899-12-30T00:00:00 with the time of day as the fraction,
/// and whether it is one. ATL::COleDateTime converts to it.
class OleDateTime {
public:
    enum DateTimeStatus { error = -1, valid = 0, invalid = 1, null = 2 };

    OleDateTime() = default;
    /// Takes the days; the status is `valid`, as nothing is checked.
    explicit OleDateTime(double date) : m_dt(date) {}
    /// Takes the days and the status of the system's class, or of one with its members.
    template <class Date>
    requires requires(const Date& date) {
        static_cast<double>(date.m_dt);
        static_cast<DateTimeStatus>(date.GetStatus());
    }
    OleDateTime(const Date& date)
        : m_dt(date.m_dt), m_status(static_cast<DateTimeStatus>(date.GetStatus())) {}

    /// Return and replace the status; the days stay as they are.
    DateTimeStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeStatus status) { m_status = status; }

    double m_dt = 0;
    DateTimeStatus m_status = valid;
};

}  // namespace quillon

#if !defined(QUILLON_NO_WINDOWS_NAMES)

#if !defined(_WIN32)
#if !defined(COM_NO_WINDOWS_H)  // not after DirectX's headers, which have the names themselves
using namespace quillon::windows;
#endif
#elif !defined(EVT_ALL_ACCESS)  // not after <winevt.h>, which has the names itself
namespace quillon {
using windows::EVT_SUBSCRIBE_NOTIFY_ACTION;
using windows::EvtSubscribeActionDeliver;
using windows::EvtSubscribeActionError;
}  // namespace quillon
#endif

#if !defined(_WIN32) || !__has_include(<atlcomtime.h>)
namespace ATL {
using COleDateTime = ::quillon::OleDateTime;
}  // namespace ATL
#endif

#endif
