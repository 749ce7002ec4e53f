#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/Wbem.h"
#include "quillon/WmiConnector.h"
#include "simulation/wmi/WmiRepository.h"
#include "support/RecordingLogger.h"

namespace quillon::test {

inline const std::wstring kNamespace = L"ROOT\\test";

inline _variant_t Number(LONG value) {
    _variant_t number;
    number.vt = VT_I4;
    number.lVal = value;
    return number;
}

inline _variant_t Array(VARTYPE type, LONG first, std::vector<_variant_t> elements) {
    _variant_t array;
    array.parray = ::SafeArrayCreateVector(type, first, static_cast<ULONG>(elements.size()));
    array.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    for (_variant_t& element : elements) {
        void* value = type == VT_BSTR ? static_cast<void*>(element.bstrVal) : &element.llVal;
        if (type == VT_UNKNOWN) value = element.punkVal;
        if (type == VT_VARIANT) value = static_cast<VARIANT*>(&element);
        EXPECT_EQ(::SafeArrayPutElement(array.parray, &first, value), S_OK);
        ++first;
    }
    return array;
}

/// A connected connector. What is simulated knows the texts of two codes.
class WmiTest : public testing::Test {
protected:
    using Level = ICLogger::Level;

    WmiTest() {
        platform::WbemCalls calls = repository.Calls();
        calls.loadMessages = [this] { return hasMessages; };
        calls.wbemMessage = [](HRESULT code) { return Message(code, L"Access is denied \r\n"); };
        calls.comMessage = [](HRESULT code) { return Message(code, L"Denied by the system"); };
        platform::ReplaceWbemCalls(calls);
        AddItems(0);
        EXPECT_TRUE(connector.Connect(kNamespace));
    }
    ~WmiTest() override {
        connector.Disconnect();
        EXPECT_EQ(repository.LiveObjects(), 0);
        platform::ReplaceWbemCalls({});
    }

    /// Class Item: a key and a number that is NULL.
    void AddItems(int count) {
        repository.AddClass(
            kNamespace,
            {L"Item", {{L"Name", CIM_STRING, {}}, {L"Number", CIM_UINT32, {}}}, {L"Name"}, methods});
        for (int i = 0; i < count; ++i) {
            const std::wstring name = L"item" + std::to_wstring(i);
            repository.AddInstance(kNamespace, L"Item", {{L"Name", _variant_t(name.c_str())}});
        }
    }

    simulation::WmiRepository repository;
    std::vector<simulation::WmiMethod> methods;
    bool hasMessages = true;
    RecordingLogger log;
    WmiConnector connector;
    DataTable table;

private:
    static std::optional<std::wstring> Message(HRESULT code, const wchar_t* text) {
        return code == static_cast<HRESULT>(WBEM_E_ACCESS_DENIED) ? std::optional<std::wstring>(text)
                                                                  : std::nullopt;
    }
};

}  // namespace quillon::test
