#pragma once

/// The Windows types that cross the library's headers, without <windows.h>. On
/// Windows they are the system's own, only declared here: include <windows.h>,
/// <oleauto.h> and <comutil.h> to use them. Elsewhere this header defines the part
/// of them that the library uses.

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

/// What these point to is the seam's own; a module is named by its base address.
using HINSTANCE = struct HINSTANCE__*;
using HKEY = struct HKEY__*;
/// Of a process: what the seam's OpenProcess gave.
using HANDLE = void*;

/// Bytes that somebody else owns.
struct CRYPTOAPI_BLOB {
    std::uint32_t cbData;
    std::uint8_t* pbData;
};

/// Parts of a certificate. Names are encoded in DER; the serial number has its least
/// significant byte first.
struct CERT_INFO {
    CRYPTOAPI_BLOB SerialNumber;
    CRYPTOAPI_BLOB Issuer;
    CRYPTOAPI_BLOB Subject;
    FILETIME NotBefore;
    FILETIME NotAfter;
};

/// A certificate in DER and its parts; the seam's own.
struct CERT_CONTEXT {
    std::uint32_t dwCertEncodingType;  // 1: X.509
    std::uint8_t* pbCertEncoded;
    std::uint32_t cbCertEncoded;
    CERT_INFO* pCertInfo;
};

#include "quillon/detail/OleTypesLinux.h"

#endif

namespace ATL {

template <class T>
class CComPtr;

/// An OLE date (days since 1899-12-30T00:00:00, the fraction being the time of
/// day) and whether it is one.
class COleDateTime {
public:
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    COleDateTime() = default;
    explicit COleDateTime(double date) : m_dt(date) {}

    DateTimeStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeStatus status) { m_status = status; }

    double m_dt = 0;
    DateTimeStatus m_status = valid;
};

}  // namespace ATL
