#pragma once

/// The Windows types that cross the library's headers, without <windows.h>. On
/// Windows they are the system's own, only declared here: include <windows.h>,
/// <oaidl.h> and <comutil.h> to use them. Elsewhere this header defines the part
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

#else

struct FILETIME {
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};
using BSTR = wchar_t*;
struct VARIANT;
class _variant_t;
class _bstr_t;

#endif

namespace ATL {

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
