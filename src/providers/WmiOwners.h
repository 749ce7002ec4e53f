#pragma once

#include <memory>
#include <string_view>

#include "platform/Wbem.h"

namespace quillon {

struct BstrDeleter {
    void operator()(wchar_t* text) const noexcept { ::SysFreeString(text); }
};
using OwnedBstr = std::unique_ptr<wchar_t, BstrDeleter>;

struct ArrayDeleter {
    void operator()(SAFEARRAY* array) const noexcept { ::SafeArrayDestroy(array); }
};
using OwnedArray = std::unique_ptr<SAFEARRAY, ArrayDeleter>;

/// A provider that succeeds and gives no object has failed: nobody may use what is not there.
template <class Object>
HRESULT ResultOf(HRESULT result, const platform::CComPtr<Object>& object) {
    return SUCCEEDED(result) && object == nullptr ? static_cast<HRESULT>(WBEM_E_FAILED) : result;
}

/// Throws as platform::RaiseComError without memory.
OwnedBstr ToBstr(std::wstring_view text);
/// Returns a VT_BSTR.
_variant_t TextVariant(std::wstring_view text);

/// The names of an object's properties, by an index from First() to Last().
class WmiNames {
public:
    HRESULT Read(IWbemClassObject& object, LONG flags);
    LONG First() const { return m_first; }
    LONG Last() const { return m_last; }
    HRESULT Get(LONG index, OwnedBstr& name) const;

private:
    OwnedArray m_names;
    LONG m_first = 0, m_last = -1;
};

}  // namespace quillon
