#pragma once

/// Declares the Windows types that the library's headers use, without <windows.h>. On Windows they are
/// the system's own and only declared here: include <windows.h>, <oleauto.h> and <comutil.h> to use
/// them. Elsewhere this header defines the part of them that the library uses.

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
using HINSTANCE = HINSTANCE__*;
struct HKEY__;
using HKEY = HKEY__*;
using HANDLE = void*;
struct _CERT_CONTEXT;
using CERT_CONTEXT = struct _CERT_CONTEXT;
struct _CRYPTOAPI_BLOB;
using CRYPTOAPI_BLOB = struct _CRYPTOAPI_BLOB;

#else

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

#include "quillon/detail/OleTypesLinux.h"

#endif

namespace ATL {

template <class T>
class CComPtr;

/// Holds an OLE date, which is the days since 1899-12-30T00:00:00 with the time of day as the fraction,
/// and whether it is one.
class COleDateTime {
public:
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    COleDateTime() = default;
    /// Takes the days; the status is `valid`, as nothing is checked.
    explicit COleDateTime(double date) : m_dt(date) {}

    /// Return and replace the status; the days stay as they are.
    DateTimeStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeStatus status) { m_status = status; }

    double m_dt = 0;
    DateTimeStatus m_status = valid;
};

}  // namespace ATL
