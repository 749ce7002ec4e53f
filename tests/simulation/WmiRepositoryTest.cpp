#include "simulation/wmi/WmiRepository.h"

#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

#include "simulation/wmi/WmiCoercion.h"

namespace quillon::simulation {

namespace {

using testing::ElementsAre;

constexpr wchar_t kNamespace[] = L"ROOT\\Lab";
constexpr LONG kLater = WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY;

constexpr LONG kForEver = static_cast<LONG>(WBEM_INFINITE);

HRESULT Failure(WBEMSTATUS status) { return static_cast<HRESULT>(status); }

_variant_t Text(const wchar_t* text) { return TextVariant(text); }
_variant_t Number(long long number) { return IntegerVariant(VT_I4, number); }

struct Property {
    HRESULT code;
    std::optional<std::wstring> text;  // none: NULL
};

Property Get(IWbemClassObject* object, const wchar_t* name) {
    _variant_t value;
    CIMTYPE type = CIM_EMPTY;
    const HRESULT code = object->Get(name, 0, &value, &type, nullptr);
    if (FAILED(code) || value.vt == VT_NULL) return {code, std::nullopt};
    return {code, CimText(value, type)};
}

std::vector<std::wstring> Names(IWbemClassObject* object, LONG flags) {
    _variant_t names;
    EXPECT_EQ(object->GetNames(nullptr, flags, nullptr, &names.parray), S_OK);
    names.vt = VT_ARRAY | VT_BSTR;
    LONG last = -1;
    SafeArrayGetUBound(names.parray, 1, &last);
    std::vector<std::wstring> texts;
    for (LONG i = 0; i <= last; ++i) {
        _bstr_t name;
        SafeArrayGetElement(names.parray, &i, &name.GetBSTR());
        texts.emplace_back(name);
    }
    return texts;
}

}  // namespace

/// Parts, told apart by a name and a number, which can be weighed, and have a live counterpart.
class WmiRepositoryTest : public testing::Test {
protected:
    WmiRepositoryTest() {
        const std::vector<WmiProperty> properties = {{L"Kind", CIM_STRING, Text(L"part")},
                                                     {L"Name", CIM_STRING, {}},
                                                     {L"No", CIM_UINT32, {}},
                                                     {L"Total", CIM_UINT64, {}}};
        const WmiMethod weigh{
            L"Weigh",
            {{L"Unit", CIM_STRING, Text(L"kg")}, {L"Count", CIM_UINT8, {}}},
            {{L"Weight", CIM_REAL64, {}}},
            [this](const auto& path, const auto& in, auto& out) { return Weigh(path, in, out); }};
        const WmiMethod reset{L"Reset", {}, {}, {}, true};
        repository->AddClass(kNamespace, {L"Part", properties, {L"Name", L"No"}, {weigh, reset}});
        repository->AddInstance(kNamespace, L"Part", {{L"Name", Text(L"a")}, {L"No", Number(1)}});
        repository->AddInstance(kNamespace, L"Part", {{L"Name", Text(L"q\"\\")}, {L"No", Number(-1)}});
        const auto live = [this](const auto& names) {
            wanted = names;
            return std::vector<WmiValues>{{{L"Name", Text(L"now")}}};
        };
        repository->AddClass(kNamespace, {L"Live", properties, {L"Name"}, {weigh}, live});
        EXPECT_EQ(Connect(L"root/lab"), S_OK);
    }
    ~WmiRepositoryTest() override {
        services.Release();
        enumerator.Release();
        if (repository) {
            EXPECT_EQ(repository->LiveObjects(), 0);
        }
    }

    HRESULT Weigh(const std::wstring& path, const WmiValues& in, WmiValues& out) {
        target = path;
        parameters.clear();
        for (const auto& [name, value] : in) parameters.push_back(name + L'=' + CimText(value, CIM_STRING));
        if (in.size() == 1) out = {{L"Weight", _variant_t(2.5)}};
        return S_OK;
    }

    HRESULT Connect(const wchar_t* nameSpace) {
        platform::CComPtr<IWbemLocator> locator;
        EXPECT_EQ(repository->CreateLocator(locator), S_OK);
        services.Release();
        _bstr_t path(nameSpace);
        return locator->ConnectServer(path.GetBSTR(), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                      &services);
    }
    HRESULT Find(const std::wstring& path, platform::CComPtr<IWbemClassObject>& object) {
        _bstr_t text(path.c_str());
        return services->GetObject(text.GetBSTR(), 0, nullptr, &object, nullptr);
    }
    HRESULT Query(const wchar_t* wql, LONG flags = 0) {
        _bstr_t language(L"wql");
        _bstr_t text(wql);
        enumerator.Release();
        return services->ExecQuery(language.GetBSTR(), text.GetBSTR(), flags, nullptr, &enumerator);
    }
    HRESULT Next(platform::CComPtr<IWbemClassObject>& object) {
        ULONG count = 0;
        object.Release();
        return enumerator->Next(kForEver, 1, &object, &count);
    }
    HRESULT Call(const wchar_t* path, const wchar_t* method, IWbemClassObject* in,
                 platform::CComPtr<IWbemClassObject>& out) {
        _bstr_t where(path);
        _bstr_t what(method);
        return services->ExecMethod(where.GetBSTR(), what.GetBSTR(), 0, nullptr, in, &out, nullptr);
    }
    platform::CComPtr<IWbemClassObject> Parameters(const wchar_t* className) {
        platform::CComPtr<IWbemClassObject> type, in, instance;
        EXPECT_EQ(Find(className, type), S_OK);
        EXPECT_EQ(type->GetMethod(L"weigh", 0, &in, nullptr), S_OK);
        EXPECT_EQ(in->SpawnInstance(0, &instance), S_OK);
        return instance;
    }

    std::vector<std::wstring> wanted, parameters;
    std::wstring target;
    std::optional<WmiRepository> repository{std::in_place, L"BOX"};
    platform::CComPtr<IWbemServices> services;
    platform::CComPtr<IEnumWbemClassObject> enumerator;
};

TEST_F(WmiRepositoryTest, NamespacesHaveNoCaseAndEitherSlash) {
    const std::pair<const wchar_t*, HRESULT> cases[] = {
        {L"ROOT\\LAB", S_OK},
        {L"\\\\.\\root\\lab", S_OK},
        {L"root", S_OK},
        {L"", Failure(WBEM_E_INVALID_NAMESPACE)},
        {L"root\\lab2", Failure(WBEM_E_INVALID_NAMESPACE)},
        {L"\\\\other\\root\\lab", static_cast<HRESULT>(0x800706BA)},
    };
    for (const auto& [path, code] : cases) EXPECT_EQ(Connect(path), code) << _bstr_t(path).length();
}

TEST_F(WmiRepositoryTest, APathLeadsToItsObject) {
    const std::wstring one = L"\\\\BOX\\ROOT\\Lab:Part.Name=\"a\",No=1";
    const std::tuple<const wchar_t*, HRESULT, std::wstring> cases[] = {
        {L"part", S_OK, L"\\\\BOX\\ROOT\\Lab:Part"},
        {one.c_str(), S_OK, one},
        {L"root/lab:Part.Name=\"a\",No=1", S_OK, one},
        {L"Part.Name=\"q\\\"\\\\\",No=4294967295", S_OK,
         L"\\\\BOX\\ROOT\\Lab:Part.Name=\"q\\\"\\\\\",No=4294967295"},
        {L"Live=\"NOW\"", S_OK, L"\\\\BOX\\ROOT\\Lab:Live.Name=\"now\""},
        {L"Live=\"then\"", Failure(WBEM_E_NOT_FOUND), {}},
        {L"Part.Name=\"a\",No=-1", Failure(WBEM_E_NOT_FOUND), {}},
        {L"Other", Failure(WBEM_E_NOT_FOUND), {}},
        {L"root\\none:Part", Failure(WBEM_E_NOT_FOUND), {}},
        {L"Part.Name=\"a\"", Failure(WBEM_E_INVALID_OBJECT_PATH), {}},
        {L"Part.Name=\"a\",Kind=1", Failure(WBEM_E_INVALID_OBJECT_PATH), {}},
        {L"Part=@", Failure(WBEM_E_INVALID_OBJECT_PATH), {}},
        {L"Live=\"now\\", Failure(WBEM_E_INVALID_OBJECT_PATH), {}},
        {L"Live.Name=\"now\"x", Failure(WBEM_E_INVALID_OBJECT_PATH), {}},
    };
    for (const auto& [path, code, found] : cases) {
        SCOPED_TRACE(testing::PrintToString(path));
        platform::CComPtr<IWbemClassObject> object;
        EXPECT_EQ(Find(path, object), code);
        if (SUCCEEDED(code)) {
            EXPECT_EQ(Get(object, L"__path").text, found);
        }
    }
}

TEST(WmiCoercion, PutConvertsToThePropertysType) {
    constexpr HRESULT kRange = static_cast<HRESULT>(WBEM_E_VALUE_OUT_OF_RANGE);
    constexpr HRESULT kMismatch = static_cast<HRESULT>(WBEM_E_TYPE_MISMATCH);
    const _variant_t highest = IntegerVariant(VT_I8, 4294967295);
    const std::tuple<CIMTYPE, _variant_t, HRESULT, VARTYPE, std::wstring> cases[] = {
        {CIM_UINT32, highest, S_OK, VT_I4, L"4294967295"},
        {CIM_UINT32, Text(L" 7 "), S_OK, VT_I4, L"7"},
        {CIM_UINT32, IntegerVariant(VT_I8, 4294967296), kRange, 0, {}},
        {CIM_UINT32, Number(-1), kRange, 0, {}},
        {CIM_UINT32, Text(L"seven"), kMismatch, 0, {}},
        {CIM_SINT8, Number(128), kRange, 0, {}},
        {CIM_SINT64, highest, S_OK, VT_BSTR, L"4294967295"},
        {CIM_UINT64, Text(L"18446744073709551615"), S_OK, VT_BSTR, L"18446744073709551615"},
        {CIM_UINT64, Text(L"-1"), kRange, 0, {}},
        {CIM_BOOLEAN, Text(L"maybe"), kMismatch, 0, {}},
        {CIM_DATETIME, Text(L"20260131183000.******+060"), S_OK, VT_BSTR, L"20260131183000.******+060"},
        {CIM_DATETIME, Text(L"2026-01-31"), kMismatch, 0, {}},
        {CIM_OBJECT, Text(L"x"), kMismatch, 0, {}},
        {static_cast<CIMTYPE>(CIM_UINT32) | CIM_FLAG_ARRAY, Number(5), kMismatch, 0, {}},
    };
    for (const auto& [type, value, code, held, text] : cases) {
        SCOPED_TRACE(testing::PrintToString(text) + " of " + std::to_string(type));
        _variant_t converted;
        EXPECT_EQ(Coerce(value, type, converted), code);
        EXPECT_EQ(converted.vt, held);
        EXPECT_EQ(CimText(converted, type), text);
    }
}

TEST_F(WmiRepositoryTest, AQueryShowsWhatItNames) {
    platform::CComPtr<IWbemClassObject> object;
    ASSERT_EQ(Query(L"SELECT no, KIND FROM Part WHERE No > 4000000000 AND __CLASS = 'part'"), S_OK);
    ASSERT_EQ(Next(object), S_OK);
    EXPECT_THAT(Names(object, WBEM_FLAG_NONSYSTEM_ONLY), ElementsAre(L"Kind", L"No"));
    EXPECT_THAT(Names(object, WBEM_FLAG_SYSTEM_ONLY),
                ElementsAre(L"__GENUS", L"__CLASS", L"__SUPERCLASS", L"__DYNASTY", L"__RELPATH",
                            L"__PROPERTY_COUNT", L"__DERIVATION", L"__SERVER", L"__NAMESPACE", L"__PATH"));
    EXPECT_EQ(Get(object, L"Name").code, Failure(WBEM_E_NOT_FOUND));
    EXPECT_EQ(Get(object, L"__PATH").text, std::nullopt);
    EXPECT_EQ(Get(object, L"__PROPERTY_COUNT").text, L"2");
    EXPECT_EQ(Next(object), S_FALSE);

    ASSERT_EQ(Query(L"SELECT __RELPATH FROM Live WHERE Total IS NULL"), S_OK);
    EXPECT_THAT(wanted, ElementsAre(L"Total", L"Name"));
    ASSERT_EQ(Next(object), S_OK);
    EXPECT_EQ(Get(object, L"__RELPATH").text, L"Live.Name=\"now\"");
    EXPECT_EQ(Query(L"SELECT * FROM Live WHERE Name = 'now'"), S_OK);
    EXPECT_THAT(wanted, testing::IsEmpty());
}

TEST_F(WmiRepositoryTest, WhatIsWrongWithAQueryIsToldInTime) {
    repository->AddClass(kNamespace, {L"Broken", {}, {}, {}, [](const auto&) -> std::vector<WmiValues> {
                                          throw std::runtime_error("gone");
                                      }});
    const auto unknown = [](const auto&) { return std::vector<WmiValues>{{{L"No such", Number(1)}}}; };
    repository->AddClass(kNamespace, {L"Odd", {}, {}, {}, unknown});
    const std::tuple<const wchar_t*, HRESULT, HRESULT> cases[] = {
        {L"SELECT FROM", Failure(WBEM_E_INVALID_QUERY), S_OK},
        {L"SELECT * FROM None", S_OK, Failure(WBEM_E_INVALID_CLASS)},
        {L"SELECT None FROM Part", S_OK, Failure(WBEM_E_INVALID_QUERY)},
        {L"SELECT * FROM Part WHERE None = 1", S_OK, Failure(WBEM_E_INVALID_QUERY)},
        {L"SELECT * FROM Broken", S_OK, Failure(WBEM_E_PROVIDER_FAILURE)},
    };
    platform::CComPtr<IWbemClassObject> object;
    for (const auto& [wql, first, second] : cases) {
        SCOPED_TRACE(wql);
        EXPECT_EQ(Query(wql, kLater), first);
        if (SUCCEEDED(first)) {
            EXPECT_EQ(Next(object), second);
        }
        EXPECT_EQ(Query(wql), FAILED(first) ? first : second);
    }
    EXPECT_EQ(Query(L"SELECT * FROM Odd"), S_OK);
    EXPECT_EQ(Next(object), Failure(WBEM_E_PROVIDER_FAILURE));
}

TEST_F(WmiRepositoryTest, AMethodGetsWhatIsSetAndGivesItsResults) {
    platform::CComPtr<IWbemClassObject> type, in, out;
    ASSERT_EQ(Find(L"Part", type), S_OK);
    EXPECT_EQ(type->GetMethod(L"reset", 0, &in, &out), S_OK);
    EXPECT_EQ(in.p, nullptr);
    EXPECT_EQ(out.p, nullptr);

    const platform::CComPtr<IWbemClassObject> values = Parameters(L"Part");
    EXPECT_EQ(Call(L"Part.No=1,Name=\"a\"", L"WEIGH", values, out), S_OK);
    EXPECT_EQ(target, L"\\\\BOX\\ROOT\\Lab:Part.Name=\"a\",No=1");
    EXPECT_THAT(parameters, ElementsAre(L"Unit=kg"));
    EXPECT_THAT(Names(out, WBEM_FLAG_NONSYSTEM_ONLY), ElementsAre(L"Weight", L"ReturnValue"));
    EXPECT_EQ(Get(out, L"Weight").text, L"2.5");
    EXPECT_EQ(Get(out, L"ReturnValue").text, L"0");

    _variant_t three = Text(L"3");
    EXPECT_EQ(values->Put(L"count", 0, &three, CIM_UINT8), S_OK);
    EXPECT_EQ(values->Put(L"none", 0, &three, CIM_UINT8), Failure(WBEM_E_NOT_FOUND));
    out.Release();
    EXPECT_EQ(Call(L"Live=\"now\"", L"Weigh", Parameters(L"Live"), out), S_OK);
    out.Release();
    EXPECT_EQ(Call(L"Part.No=1,Name=\"a\"", L"Weigh", values, out), S_OK);
    EXPECT_THAT(parameters, ElementsAre(L"Unit=kg", L"Count=3"));
    EXPECT_EQ(Get(out, L"Weight").text, std::nullopt);
}

TEST_F(WmiRepositoryTest, AMethodRefusesWhatIsNotItsOwn) {
    const platform::CComPtr<IWbemClassObject> others = Parameters(L"Live");
    const std::tuple<const wchar_t*, const wchar_t*, IWbemClassObject*, HRESULT> cases[] = {
        {L"Part", L"Reset", nullptr, S_OK},
        {L"Part.No=1,Name=\"a\"", L"Reset", nullptr, S_OK},
        {L"Part", L"Reset", others, Failure(WBEM_E_INVALID_METHOD_PARAMETERS)},
        {L"Part", L"Weigh", nullptr, Failure(WBEM_E_INVALID_METHOD)},
        {L"Part.No=1,Name=\"a\"", L"Weigh", others, Failure(WBEM_E_INVALID_METHOD_PARAMETERS)},
        {L"Part", L"None", nullptr, Failure(WBEM_E_INVALID_METHOD)},
        {L"Part.No=5,Name=\"a\"", L"Weigh", nullptr, Failure(WBEM_E_NOT_FOUND)},
    };
    for (const auto& [path, method, in, code] : cases) {
        SCOPED_TRACE(testing::PrintToString(path));
        platform::CComPtr<IWbemClassObject> out;
        EXPECT_EQ(Call(path, method, in, out), code);
        EXPECT_EQ(out.p, nullptr);
    }
}

TEST_F(WmiRepositoryTest, AnInstanceIsStoredUnderItsKeys) {
    platform::CComPtr<IWbemClassObject> type, made, live, partial;
    ASSERT_EQ(Find(L"Part", type), S_OK);
    ASSERT_EQ(type->SpawnInstance(0, &made), S_OK);
    const auto put = [this](IWbemClassObject* object) {
        return services->PutInstance(object, 0, nullptr, nullptr);
    };
    const auto set = [&made](const wchar_t* name, _variant_t value) {
        EXPECT_EQ(made->Put(name, 0, &value, CIM_ILLEGAL), S_OK);
    };
    EXPECT_EQ(put(type), Failure(WBEM_E_INVALID_OBJECT));
    EXPECT_EQ(put(made), Failure(WBEM_E_INVALID_OBJECT));
    set(L"name", Text(L"A"));
    set(L"No", Text(L"1"));
    set(L"Total", IntegerVariant(VT_I8, 1LL << 40));
    EXPECT_EQ(put(made), S_OK);
    EXPECT_EQ(CimText(repository->ReadValue(kNamespace, L"Part", 0, L"Total"), CIM_UINT64), L"1099511627776");
    set(L"No", Number(2));
    EXPECT_EQ(put(made), S_OK);
    EXPECT_EQ(repository->ReadValue(kNamespace, L"Part", 2, L"No").lVal, 2);
    EXPECT_EQ(repository->ReadValue(kNamespace, L"Part", 0, L"No").lVal, 1);

    ASSERT_EQ(Find(L"Live=\"now\"", live), S_OK);
    EXPECT_EQ(put(live), Failure(WBEM_E_PROVIDER_NOT_CAPABLE));
    ASSERT_EQ(Query(L"SELECT Name FROM Part"), S_OK);
    ASSERT_EQ(Next(partial), S_OK);
    EXPECT_EQ(put(partial), Failure(WBEM_E_INVALID_OBJECT));
    EXPECT_EQ(live->Put(L"__CLASS", 0, nullptr, CIM_STRING), Failure(WBEM_E_READ_ONLY));
}

}  // namespace quillon::simulation
