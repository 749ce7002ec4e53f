#include "providers/WmiOwners.h"

#include "platform/ole/ComError.h"

namespace quillon {

OwnedBstr ToBstr(std::wstring_view text) {
    OwnedBstr copy(::SysAllocStringLen(text.data(), static_cast<unsigned int>(text.size())));
    if (copy == nullptr) platform::RaiseComError(E_OUTOFMEMORY);
    return copy;
}

_variant_t TextVariant(std::wstring_view text) {
    _variant_t value;
    value.bstrVal = ToBstr(text).release();
    value.vt = VT_BSTR;
    return value;
}

HRESULT WmiNames::Read(IWbemClassObject& object, LONG flags) {
    SAFEARRAY* names = nullptr;
    HRESULT result = object.GetNames(nullptr, flags, nullptr, &names);
    m_names.reset(names);
    if (FAILED(result) || names == nullptr) return result;
    result = ::SafeArrayGetLBound(names, 1, &m_first);
    return FAILED(result) ? result : ::SafeArrayGetUBound(names, 1, &m_last);
}

HRESULT WmiNames::Get(LONG index, OwnedBstr& name) const {
    BSTR text = nullptr;
    const HRESULT result = ::SafeArrayGetElement(m_names.get(), &index, &text);
    name.reset(text);
    return result;
}

}  // namespace quillon
