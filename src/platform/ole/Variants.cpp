#include <memory>
#include <new>
#include <vector>

#include "platform/ole/WbemTypes.h"

namespace quillon::windows {

/// Elements stand as values of the array's type; those of VT_VARIANT as they are.
struct SAFEARRAY {
    SAFEARRAY(VARTYPE elementType, LONG firstIndex, ULONG count)
        : type(elementType), lowerBound(firstIndex), elements(count) {
        if (elementType == VT_VARIANT) return;
        for (VARIANT& element : elements) element.vt = elementType;
    }
    SAFEARRAY(const SAFEARRAY&) = delete;
    SAFEARRAY& operator=(const SAFEARRAY&) = delete;
    ~SAFEARRAY() {
        for (VARIANT& element : elements) VariantClear(&element);
    }

    VARIANT* At(const LONG* index) {
        const auto position = std::int64_t{*index} - lowerBound;
        if (position < 0 || position >= static_cast<std::int64_t>(elements.size())) return nullptr;
        return &elements[static_cast<std::size_t>(position)];
    }

    const VARTYPE type;
    const LONG lowerBound;
    std::vector<VARIANT> elements;
};

namespace {

/// 0: no type that an array may hold.
std::size_t SizeOf(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_R4:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return 8;
        case VT_DECIMAL:
            return sizeof(DECIMAL);
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

bool IsInterface(VARTYPE type) { return type == VT_UNKNOWN || type == VT_DISPATCH; }

/// `target` holds nothing yet.
HRESULT CopyInto(VARIANT& target, const VARIANT& source) {
    target = source;
    if ((source.vt & VT_ARRAY) != 0) {
        target.parray = nullptr;
        return source.parray == nullptr ? S_OK : SafeArrayCopy(source.parray, &target.parray);
    }
    if (source.vt == VT_BSTR && source.bstrVal != nullptr) {
        target.bstrVal = SysAllocStringLen(source.bstrVal, SysStringLen(source.bstrVal));
        if (target.bstrVal == nullptr) return E_OUTOFMEMORY;
    }
    if (IsInterface(source.vt) && source.punkVal != nullptr) source.punkVal->AddRef();
    return S_OK;
}

}  // namespace

HRESULT VariantClear(VARIANT* value) {
    if (value == nullptr) return E_INVALIDARG;
    const VARIANT old = *value;
    VariantInit(value);
    if ((old.vt & VT_ARRAY) != 0) return SafeArrayDestroy(old.parray);
    if (old.vt == VT_BSTR) SysFreeString(old.bstrVal);
    if (IsInterface(old.vt) && old.punkVal != nullptr) old.punkVal->Release();
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == nullptr || source == nullptr) return E_INVALIDARG;
    if (target == source) return S_OK;
    VARIANT copy{};
    const HRESULT result = CopyInto(copy, *source);
    if (FAILED(result)) return result;
    VariantClear(target);
    *target = copy;
    return S_OK;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
    if (SizeOf(type) == 0) return nullptr;
    try {
        return std::make_unique<SAFEARRAY>(type, lowerBound, count).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    delete array;
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (array == nullptr || copy == nullptr) return E_INVALIDARG;
    const auto count = static_cast<ULONG>(array->elements.size());
    *copy = nullptr;
    std::unique_ptr<SAFEARRAY> made(SafeArrayCreateVector(array->type, array->lowerBound, count));
    if (made == nullptr) return E_OUTOFMEMORY;
    for (ULONG i = 0; i < count; ++i) {
        const HRESULT result = VariantCopy(&made->elements[i], &array->elements[i]);
        if (FAILED(result)) return result;
    }
    *copy = made.release();
    return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (array == nullptr || type == nullptr) return E_INVALIDARG;
    *type = array->type;
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, unsigned int dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if (dimension != 1) return DISP_E_BADINDEX;
    *bound = array->lowerBound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, unsigned int dimension, LONG* bound) {
    const HRESULT result = SafeArrayGetLBound(array, dimension, bound);
    if (SUCCEEDED(result)) *bound += static_cast<LONG>(array->elements.size()) - 1;
    return result;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr || element == nullptr) return E_INVALIDARG;
    const VARIANT* const found = array->At(index);
    if (found == nullptr) return DISP_E_BADINDEX;
    VARIANT copy{};
    const HRESULT result = CopyInto(copy, *found);
    if (FAILED(result)) return result;
    const void* const from = array->type == VT_VARIANT ? static_cast<const void*>(&copy) : &copy.decVal;
    std::memcpy(element, from, SizeOf(array->type));
    return S_OK;  // NOLINT(clang-analyzer-unix.Malloc): with its bytes the copy has become the caller's
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr) return E_INVALIDARG;
    VARIANT* const found = array->At(index);
    if (found == nullptr) return DISP_E_BADINDEX;
    if (array->type == VT_VARIANT) return VariantCopy(found, static_cast<const VARIANT*>(element));
    VARIANT given{};
    given.vt = array->type;
    const bool isItself = array->type == VT_BSTR || IsInterface(array->type);
    const void* const from = isItself ? static_cast<const void*>(&element) : element;
    if (from == nullptr) return E_INVALIDARG;
    std::memcpy(&given.decVal, from, SizeOf(array->type));
    return VariantCopy(found, &given);
}

}  // namespace quillon::windows
