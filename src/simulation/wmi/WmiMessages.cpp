#include "simulation/wmi/WmiMessages.h"

#include <algorithm>
#include <iterator>

#include "base/Utf.h"
#include "platform/ErrorText.h"

namespace quillon::simulation {

namespace {

struct Message {
    HRESULT code;
    const wchar_t* text;
};

// Ascending codes, of which every one is a failure.
constexpr Message kMessages[] = {
    {static_cast<HRESULT>(WBEM_E_FAILED), L"Generic failure "},
    {static_cast<HRESULT>(WBEM_E_NOT_FOUND), L"Not found "},
    {static_cast<HRESULT>(WBEM_E_ACCESS_DENIED), L"Access denied "},
    {static_cast<HRESULT>(WBEM_E_PROVIDER_FAILURE), L"Provider failure "},
    {static_cast<HRESULT>(WBEM_E_TYPE_MISMATCH), L"Type mismatch "},
    {static_cast<HRESULT>(WBEM_E_OUT_OF_MEMORY), L"Out of memory "},
    {static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER), L"Invalid parameter "},
    {static_cast<HRESULT>(WBEM_E_NOT_SUPPORTED), L"Not supported "},
    {static_cast<HRESULT>(WBEM_E_INVALID_NAMESPACE), L"Invalid namespace "},
    {static_cast<HRESULT>(WBEM_E_INVALID_OBJECT), L"Invalid object "},
    {static_cast<HRESULT>(WBEM_E_INVALID_CLASS), L"Invalid class "},
    {static_cast<HRESULT>(WBEM_E_INVALID_QUERY), L"Invalid query "},
    {static_cast<HRESULT>(WBEM_E_INVALID_QUERY_TYPE), L"Invalid query type "},
    {static_cast<HRESULT>(WBEM_E_PROVIDER_NOT_CAPABLE),
     L"Provider is not capable of the attempted operation "},
    {static_cast<HRESULT>(WBEM_E_INVALID_METHOD), L"Invalid method "},
    {static_cast<HRESULT>(WBEM_E_INVALID_METHOD_PARAMETERS), L"Invalid method Parameter(s) "},
    {static_cast<HRESULT>(WBEM_E_READ_ONLY), L"Attempted to modify a read-only property "},
    {static_cast<HRESULT>(WBEM_E_VALUE_OUT_OF_RANGE), L"Value out of range "},
    {static_cast<HRESULT>(WBEM_E_INVALID_OBJECT_PATH), L"Invalid object path "},
};

}  // namespace

std::optional<std::wstring> SystemMessage(HRESULT code) {
    const auto text = platform::ErrorCodeText(code);
    return text ? std::optional(base::ToWide(*text)) : std::nullopt;
}

std::optional<std::wstring> WmiMessage(HRESULT code) {
    const auto before = [](const Message& message, HRESULT wanted) { return message.code < wanted; };
    const auto* const found = std::lower_bound(std::begin(kMessages), std::end(kMessages), code, before);
    if (found != std::end(kMessages) && found->code == code) return found->text;
    return SystemMessage(code);
}

}  // namespace quillon::simulation
