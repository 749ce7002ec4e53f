#include "platform/Wbem.h"

#include "platform/win32/LocalMemory.h"

namespace quillon::platform {

namespace {

HRESULT CreateLocator(CComPtr<IWbemLocator>& locator) {
    return ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                              reinterpret_cast<void**>(&locator));
}

HRESULT SetProxyBlanket(IWbemServices* services) {
    return ::CoSetProxyBlanket(services, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                               RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

/// From the system's own directories only: elsewhere anybody may have put a file of that name.
HMODULE LoadMessages() {
    wchar_t folder[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    for (const wchar_t* const name : {L"\\wbem\\WmiUtils.dll", L"\\WmiUtils.dll"}) {
        const std::wstring path = std::wstring(folder, length) + name;
        if (const HMODULE module = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE))
            return module;
    }
    return nullptr;
}

/// Never freed: messages are asked for until the process ends.
HMODULE MessageModule() {
    static const HMODULE module = LoadMessages();
    return module;
}

std::optional<std::wstring> Message(DWORD source, HMODULE module, HRESULT code) {
    wchar_t* buffer = nullptr;
    const DWORD flags = source | FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                        FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length = ::FormatMessageW(flags, module, static_cast<DWORD>(code), 0,
                                          reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    const LocalMemory owner(buffer);
    if (length == 0 || buffer == nullptr) return std::nullopt;
    return std::wstring(buffer, length);
}

std::optional<std::wstring> MessageOfModuleOrSystem(HRESULT code) {
    return Message(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM, MessageModule(), code);
}

std::optional<std::wstring> MessageOfSystem(HRESULT code) {
    return Message(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code);
}

void AppendProperty(IWbemClassObject& status, const wchar_t* name, std::wstring& text) {
    VARIANT value;
    ::VariantInit(&value);
    if (SUCCEEDED(status.Get(name, 0, &value, nullptr, nullptr)) && value.vt == VT_BSTR &&
        ::SysStringLen(value.bstrVal) != 0) {
        if (!text.empty()) text += L"; ";
        text += std::wstring(name) + L": " + std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal));
    }
    ::VariantClear(&value);
}

std::wstring TakeErrorDetails() {
    CComPtr<IErrorInfo> information;
    if (::GetErrorInfo(0, &information) != S_OK || information == nullptr) return {};
    CComPtr<IWbemClassObject> status;
    if (FAILED(information->QueryInterface(IID_IWbemClassObject, reinterpret_cast<void**>(&status))))
        return {};
    std::wstring text;
    for (const wchar_t* const name : {L"Operation", L"ParameterInfo", L"ProviderName", L"Description"})
        AppendProperty(*status, name, text);
    return text;
}

}  // namespace

WbemCalls SystemWbemCalls() {
    return {CreateLocator,           SetProxyBlanket, [] { return MessageModule() != nullptr; },
            MessageOfModuleOrSystem, MessageOfSystem, TakeErrorDetails};
}

}  // namespace quillon::platform
