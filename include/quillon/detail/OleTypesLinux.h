#pragma once

/// Defines the part of VARIANT, BSTR and SAFEARRAY, and of their owners, that the library uses, with the
/// results of <oleauto.h> and <comutil.h> on Windows. Include <quillon/WindowsTypes.h>, not this.
/// One thread at a time uses an object; nothing is logged.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <utility>

#include "quillon/Export.h"

namespace quillon::windows {

/// Points to UTF-16 text with its length in front of it, so that it may hold NULs; null is the empty
/// text. It is freed by SysFreeString() only.
using BSTR = wchar_t*;

/// Returns a copy of `length` code units, which the caller owns; null when there is no memory. `text`
/// may be null: the content is then undefined.
inline BSTR SysAllocStringLen(const wchar_t* text, unsigned int length) {
    const std::size_t bytes = std::size_t{length} * sizeof(wchar_t);
    void* const block = std::malloc(sizeof(std::size_t) + bytes + sizeof(wchar_t));
    if (block == nullptr) return nullptr;
    std::memcpy(block, &bytes, sizeof bytes);
    const BSTR result = reinterpret_cast<BSTR>(static_cast<char*>(block) + sizeof bytes);
    if (text != nullptr && length != 0) std::memcpy(result, text, bytes);
    result[length] = L'\0';
    return result;
}

/// Returns a copy of a NUL-terminated text, which the caller owns; null for null or without memory.
inline BSTR SysAllocString(const wchar_t* text) {
    return text == nullptr ? nullptr : SysAllocStringLen(text, static_cast<unsigned int>(std::wcslen(text)));
}

/// Returns the length in code units, NULs inside included; 0 for null.
inline unsigned int SysStringLen(BSTR text) {
    if (text == nullptr) return 0;
    std::size_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
    return static_cast<unsigned int>(bytes / sizeof(wchar_t));
}

/// Frees the text; null is allowed.
inline void SysFreeString(BSTR text) {
    if (text != nullptr) std::free(reinterpret_cast<char*>(text) - sizeof(std::size_t));
}

struct IUnknown;
struct IWbemClassObject;
struct IWbemServices;
/// Holds a one-dimensional array of one type; its members are private to the library.
struct SAFEARRAY;

/// Holds a result code of COM: 0 and above is success.
using HRESULT = std::int32_t;
using VARTYPE = std::uint16_t;
using VARIANT_BOOL = std::int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_ARRAY = 0x2000,
};

/// Holds a number of 96 bits, divided by ten `scale` times.
struct DECIMAL {
    std::uint16_t wReserved;  // no padding: a copy or an empty VARIANT need not set that
    std::uint8_t scale;
    std::uint8_t sign;  // 0x80: negative
    std::uint32_t Hi32;
    std::uint64_t Lo64;
};

/// Holds a value and its type. The holder clears it with VariantClear(); a _variant_t does so itself.
struct VARIANT {
    VARTYPE vt;
    union {
        DECIMAL decVal;  // first and largest: an empty VARIANT is all zeros
        long long llVal;
        signed char cVal;
        unsigned char bVal;
        std::int16_t iVal;
        std::uint16_t uiVal;
        std::int32_t lVal;
        std::uint32_t ulVal;
        unsigned long long ullVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        double date;
        BSTR bstrVal;
        IUnknown* punkVal;
        SAFEARRAY* parray;
    };
};

/// Makes the value VT_EMPTY without freeing anything.
inline void VariantInit(VARIANT* value) { *value = VARIANT{}; }
/// Frees the text, array or reference, and leaves VT_EMPTY. Returns 0 or E_INVALIDARG.
QUILLON_API HRESULT VariantClear(VARIANT* value);
/// Replaces what `target` held by a deep copy; an interface gets one more reference. Returns 0 or
/// E_OUTOFMEMORY.
QUILLON_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

/// Owns a BSTR. Copies throw std::bad_alloc when there is no memory.
class _bstr_t {
public:
    _bstr_t() = default;
    /// Copies a NUL-terminated text; null makes none.
    _bstr_t(const wchar_t* text) : m_text(Copy(text, text == nullptr ? 0 : std::wcslen(text))) {}
    /// Copies the text, or takes it over.
    _bstr_t(BSTR text, bool copy) : m_text(copy ? Copy(text, SysStringLen(text)) : text) {}
    _bstr_t(const _bstr_t& other) : m_text(Copy(other.m_text, other.length())) {}
    _bstr_t(_bstr_t&& other) noexcept : m_text(other.Detach()) {}
    ~_bstr_t() { SysFreeString(m_text); }
    _bstr_t& operator=(_bstr_t other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }

    /// Returns the text, which stays owned; null when there is none.
    operator const wchar_t*() const noexcept { return m_text; }
    /// Returns the length in code units.
    unsigned int length() const noexcept { return SysStringLen(m_text); }
    /// Returns the pointer itself, for a function that stores a new text in it.
    BSTR& GetBSTR() noexcept { return m_text; }
    /// Hands the text to the caller, who frees it.
    BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }

private:
    static BSTR Copy(const wchar_t* text, std::size_t length) {
        if (text == nullptr) return nullptr;
        const BSTR copy = SysAllocStringLen(text, static_cast<unsigned int>(length));
        if (copy == nullptr) throw std::bad_alloc();
        return copy;
    }

    BSTR m_text = nullptr;
};

/// Owns a VARIANT. Copies throw std::bad_alloc when there is no memory.
class _variant_t : public VARIANT {
public:
    /// Makes VT_EMPTY.
    _variant_t() noexcept : VARIANT{} {}
    /// Copy deeply, or take the value over and leave VT_EMPTY.
    _variant_t(const VARIANT& source) : VARIANT{} {
        if (VariantCopy(this, &source) < 0) throw std::bad_alloc();
    }
    _variant_t(const _variant_t& other) : _variant_t(static_cast<const VARIANT&>(other)) {}
    _variant_t(_variant_t&& other) noexcept : VARIANT(other.Detach()) {}
    /// Make a VT_BSTR, from a copy of the text or by taking it over.
    _variant_t(const wchar_t* text) : _variant_t(_bstr_t(text)) {}
    _variant_t(_bstr_t text) noexcept : VARIANT{} {
        vt = VT_BSTR;
        bstrVal = text.Detach();
    }
    /// Makes a VT_R8, or a VT_DATE, whose value is an OLE date.
    _variant_t(double value, VARTYPE type = VT_R8) noexcept : VARIANT{} {
        vt = type;
        dblVal = value;
    }
    explicit _variant_t(bool value) noexcept : VARIANT{} {
        vt = VT_BOOL;
        boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit _variant_t(long long value) noexcept : VARIANT{} {
        vt = VT_I8;
        llVal = value;
    }
    ~_variant_t() { Clear(); }
    _variant_t& operator=(_variant_t other) noexcept {
        std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
        return *this;
    }

    /// Frees what is held and leaves VT_EMPTY.
    void Clear() noexcept { VariantClear(this); }
    /// Hands the value to the caller, who clears it, and leaves VT_EMPTY.
    VARIANT Detach() noexcept { return std::exchange(static_cast<VARIANT&>(*this), VARIANT{}); }
};

}  // namespace quillon::windows
