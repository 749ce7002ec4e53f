#include "WmiFixture.h"

namespace quillon::test {

namespace {

using simulation::WmiCall;
using simulation::WmiValues;

class WmiConnectorUpdateTest : public WmiTest {
protected:
    LONG NumberOf(std::size_t index) const {
        const _variant_t value = repository.ReadValue(kNamespace, L"Item", index, L"Number");
        return value.vt == VT_I4 ? value.lVal : -1;
    }

    const DataTable change{VariantList(Variant("number", true))};
};

class WmiConnectorMethodTest : public WmiTest {
protected:
    WmiConnectorMethodTest() {
        const auto body = [this](const std::wstring& path, const WmiValues& in, WmiValues& out) {
            paths.push_back(path);
            for (const auto& [name, value] : in) {
                if (value.vt == VT_BSTR) given += name + L'=' + value.bstrVal + L' ';
            }
            out = {{L"Answer", L"yes"}, {L"ReturnValue", Number(0)}};
            return S_OK;
        };
        methods = {{L"Do",
                    {{L"Name", CIM_STRING, {}}, {L"Count", CIM_UINT8, {}}, {L"Thing", CIM_OBJECT, {}}},
                    {{L"Answer", CIM_STRING, {}}},
                    body},
                   {L"Make", {{L"Name", CIM_STRING, {}}}, {{L"Answer", CIM_STRING, {}}}, body, true}};
        AddItems(2);
    }

    std::vector<std::wstring> paths;
    std::wstring given;
};

}  // namespace

TEST_F(WmiConnectorUpdateTest, FirstStopsAfterOneAndAllGoesOn) {
    AddItems(3);
    EXPECT_TRUE(connector.ExecuteUpdateFirst(L"SELECT * FROM Item", &change, &table));
    EXPECT_EQ(table.begin()->Get("Number"), Variant("Number", 1));
    EXPECT_THAT(log.Lines(Level::Debug),
                testing::ElementsAre("Connected to WMI namespace \"ROOT\\test\"",
                                     "Executing WMI query 'SELECT * FROM Item'",
                                     "Updating property [number] CIM_SINT64 = value VT_I8[1]",
                                     "Put property [number] value [sint64:1]", "Putting instance",
                                     "Instance put", "continuationPolicy() said stop"));
    EXPECT_EQ(NumberOf(0), 1);
    EXPECT_EQ(NumberOf(1), -1);
    EXPECT_TRUE(connector.ExecuteUpdateAll(L"SELECT * FROM Item", &change, &table));
    EXPECT_EQ(table.GetNumberOfRows(), 4U);
    EXPECT_EQ(NumberOf(2), 1);
    EXPECT_TRUE(connector.ExecuteUpdateAll(L"SELECT * FROM Item WHERE Name = 'x'", &change, nullptr));
    EXPECT_EQ(log.Lines().back(), "nothing returned by the query");
}

TEST_F(WmiConnectorUpdateTest, APropertysTypeDecidesWhatIsPut) {
    const std::tuple<CIMTYPE, Variant, const char*, const char*> cases[] = {
        {CIM_SINT64, Variant("P", -5), "CIM_SINT64 = value VT_I8[-5]", "sint64:-5"},
        {CIM_REAL32, Variant("P", 0.5), "CIM_REAL64 = value VT_R8[0.500000]", "real64:0.5"},
        {CIM_STRING, Variant("P", "\xC3\xA9"), "CIM_STRING = value VT_BSTR[\xC3\xA9]", "\xC3\xA9"},
        {CIM_BOOLEAN, Variant("P", 2), "CIM_BOOLEAN = value VT_BOOL[true]", "bool:true"},
        {CIM_DATETIME, Variant("P", "20260131183000.000000+000"),
         "CIM_DATETIME = value VT_BSTR[20260131183000.000000+000]", "20260131183000.000000+000"},
    };
    for (const auto& [type, value, made, put] : cases) {
        SCOPED_TRACE(made);
        repository.AddClass(kNamespace, {L"One", {{L"K", CIM_STRING, L"k"}, {L"P", type, {}}}, {L"K"}});
        repository.AddInstance(kNamespace, L"One", {});
        const DataTable values{VariantList(value)};
        EXPECT_TRUE(connector.ExecuteUpdateFirst(L"SELECT * FROM One", &values, &table));
        EXPECT_THAT(log.Lines(),
                    testing::IsSupersetOf({std::string("Updating property [P] ") + made,
                                           std::string("Put property [P] value [") + put + "]"}));
        EXPECT_NE(repository.ReadValue(kNamespace, L"One", 0, L"P").vt, VT_NULL);
    }
    const DataTable wrong{VariantList(Variant("P", 1))};
    EXPECT_THROW(connector.ExecuteUpdateFirst(L"SELECT * FROM One", &wrong, &table), std::invalid_argument);
}

TEST_F(WmiConnectorUpdateTest, NullsAndArraysAreWrittenOnRequestAndTheRestIsRefusedBeforeTheFirstPut) {
    const CIMTYPE kArray = CIM_FLAG_ARRAY;
    repository.AddClass(kNamespace, {L"One",
                                     {{L"K", CIM_STRING, L"k"},
                                      {L"P", CIM_STRING, L"p"},
                                      {L"Texts", CIM_STRING | kArray, {}},
                                      {L"Large", CIM_UINT32 | kArray, {}},
                                      {L"Small", CIM_SINT8 | kArray, {}},
                                      {L"Huge", CIM_UINT64, {}},
                                      {L"Thing", CIM_OBJECT, {}}},
                                     {L"K"}});
    repository.AddInstance(kNamespace, L"One", {});
    const auto update = [this](const Variant& first, const Variant& second) {
        const DataTable values{VariantList(first, second)};
        table.Clear(true);
        return connector.ExecuteUpdateAll(L"SELECT * FROM One", &values, &table);
    };
    const auto null = Variant::NullVariant("P");
    EXPECT_THROW(update(null, Variant("Texts", "a")), null_Variant);
    connector.SetUpdatePolicy(WmiConnector::UpdatePolicy::NullsAndArrays);
    ASSERT_TRUE(update(null, Variant("Texts", "a, b\n\nc")));
    EXPECT_TRUE(table.begin()->Get("P").IsNull());
    EXPECT_EQ(table.begin()->Get("Texts"), Variant("Texts", "a, b, , c"));
    EXPECT_THAT(log.Lines(), testing::Contains("Updating property [Texts] value VT_ARRAY[a, b\\n\\nc]"));
    ASSERT_TRUE(update(Variant("Large", "1\n4294967295"), Variant("Small", "-128\n127")));
    EXPECT_EQ(table.begin()->Get("Small"), Variant("Small", "-128, 127"));
    const _variant_t large = repository.ReadValue(kNamespace, L"One", 0, L"Large");
    ASSERT_EQ(large.vt, VT_ARRAY | VT_I4);
    LONG second = 1, bits = 0;
    EXPECT_EQ(::SafeArrayGetElement(large.parray, &second, &bits), S_OK);
    EXPECT_EQ(static_cast<ULONG>(bits), 4294967295u);
    ASSERT_TRUE(update(Variant("Texts", ""), Variant("P", "p")));
    EXPECT_EQ(table.begin()->Get("Texts"), Variant("Texts", ""));
    connector.SetUint64Policy(WmiConnector::Uint64Policy::Text);
    for (const Variant& huge : {Variant("Huge", "18446744073709551615"), Variant("Huge", 7)}) {
        ASSERT_TRUE(update(huge, Variant("P", "p")));
        EXPECT_EQ(table.begin()->Get("Huge"), huge);
    }
    const auto puts = repository.CallCount(WmiCall::Put);
    for (const auto& refused : {Variant("Small", "128"), Variant("Small", 1), Variant("Thing", "t"),
                                Variant("Huge", "18446744073709551616"), Variant("Huge", "7 ")}) {
        EXPECT_FALSE(update(Variant("P", "changed"), refused)) << refused;
        EXPECT_EQ(connector.LastWmiErrorCode(), static_cast<std::int32_t>(WBEM_E_TYPE_MISMATCH));
        EXPECT_THAT(log.Lines(Level::Error).back(), testing::StartsWith("Cannot update property "));
    }
    EXPECT_EQ(repository.CallCount(WmiCall::Put), puts);
}

TEST_F(WmiConnectorUpdateTest, AFailureOrAnUnusableTableChangesNothing) {
    AddItems(1);
    const DataTable absent{VariantList(Variant("Absent", 1))};
    DataTable noRow, fewValues;
    for (DataTable* columns : {&noRow, &fewValues}) columns->AddLongLongCol("Number");
    fewValues.AddStringCol("Name");
    fewValues.AddRow(VariantList(Variant("Number", 1)));
    const std::tuple<const DataTable*, std::optional<WmiCall>, const char*, const char*> cases[] = {
        {&absent, {}, "(while could not find an update property)", "could not find update property [Absent]"},
        {&change, WmiCall::Put, "(while could not set property)",
         "could not set property [number] on object 0"},
        {&change, WmiCall::PutInstance, "(while failed to PutInstance after updates applied)", "Putting"},
        {&change, WmiCall::Next, "(while enumerating WMI result)", "Executing"},
        {&change, WmiCall::ExecQuery, "(while executing WQL query)", "Executing"},
        {&noRow, {}, "a row of a value for each column", nullptr},
        {&fewValues, {}, "a row of a value for each column", nullptr},
        {nullptr, {}, "a row of a value for each column", nullptr},
    };
    for (const auto& [updates, failing, error, debug] : cases) {
        SCOPED_TRACE(error);
        log.Forget();
        if (failing) repository.FailNext(*failing, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED));
        EXPECT_FALSE(connector.ExecuteUpdateAll(L"SELECT * FROM Item", updates, &table));
        EXPECT_THAT(log.Lines(Level::Error).back(), testing::EndsWith(error));
        const std::vector<std::string> lines = log.Lines(Level::Debug);
        EXPECT_TRUE(debug == nullptr ? lines.empty() : lines.back().starts_with(debug));
        EXPECT_EQ(NumberOf(0), -1);
    }
    EXPECT_TRUE(table.Empty());
}

TEST_F(WmiConnectorMethodTest, ParametersAreFoundByNameInAnyCase) {
    MethodParameters parameters;
    parameters.scalars = VariantList(Variant("NAME", "n"), Variant("name", "second"), Variant("count", 300),
                                     Variant("Thing", "t"), Variant("Other", 1));
    EXPECT_TRUE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", false, parameters, &table));
    EXPECT_EQ(given, L"Name=n ");
    ASSERT_EQ(table.GetNumberOfRows(), 1U);
    EXPECT_EQ(table.begin()->Get("Answer"), Variant("Answer", "yes"));
    EXPECT_THAT(table.begin()->Get("ObjectPath").GetStringValue(), testing::EndsWith("Item.Name=\"item0\""));
    EXPECT_THAT(log.Lines(Level::Warn),
                testing::ElementsAre(
                    "Could not apply parameter value of 'Count' to parameter '300'",
                    "Data-type for parameter 'Thing' is not supported for WMI method invocation; skipping"));
    EXPECT_THAT(log.Lines(Level::Trace), testing::Contains(" -> Parameter name is Count - CIM type is 17"));
}

TEST_F(WmiConnectorMethodTest, AMisspeltParameterFailsBeforeTheCallOnRequest) {
    MethodParameters parameters;
    parameters.scalars = VariantList(Variant("name", "n"), Variant("Nmae", "x"));
    connector.RefuseUnknownParameters(true);
    EXPECT_FALSE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", true, parameters, &table));
    EXPECT_EQ(connector.LastWmiError(), L"Method Do has no parameter Nmae");
    EXPECT_THAT(paths, testing::IsEmpty());
    parameters.scalars = VariantList(Variant("NAME", "n"));
    EXPECT_TRUE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", false, parameters, &table));
    EXPECT_EQ(given, L"Name=n ");
}

TEST_F(WmiConnectorMethodTest, IsCalledForTheClassOrForEveryObject) {
    EXPECT_TRUE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", true, {}, &table));
    EXPECT_EQ(paths.size(), 2U);
    EXPECT_EQ(table.GetNumberOfRows(), 2U);
    EXPECT_TRUE(connector.ExecuteStaticMethod(L"Item", L"Make", {}, &table));
    EXPECT_EQ(table.GetNumberOfRows(), 3U);
    EXPECT_FALSE(table.GetFirstRow()->Contains("objectpath"));
    EXPECT_THAT(log.Lines(), testing::IsSupersetOf(
                                 {"Executing instance WMI method 'Do' on all results of 'SELECT * FROM Item'",
                                  "Executing static WMI method 'Make' on 'Item'"}));
    connector.Disconnect();
    EXPECT_FALSE(connector.ExecuteStaticMethod(L"Item", L"Make", {}, &table));
    EXPECT_EQ(log.Lines().back(), "Cannot execute WMI method as WmiConnector is not connected");
}

TEST_F(WmiConnectorMethodTest, EachFailingCallIsNamed) {
    const std::pair<WmiCall, const char*> cases[] = {
        {WmiCall::GetObject, "getting reference to class Item"},
        {WmiCall::GetMethod, "getting metadata for method Do"},
        {WmiCall::SpawnInstance, "instantiating input parameters for method Do"},
        {WmiCall::GetNames, "retrieving input parameter definitions for method Do"},
        {WmiCall::ExecMethod, "executing method Do"},
        {WmiCall::Get, "deriving __PATH property for target query result"},
        {WmiCall::Next, "enumerating WMI result"},
    };
    for (const auto& [call, context] : cases) {
        SCOPED_TRACE(context);
        repository.FailNext(call, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED));
        EXPECT_FALSE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", true, {}, &table));
        EXPECT_THAT(log.Lines(Level::Error).back(), testing::HasSubstr(context));
    }
    repository.FailNext(WmiCall::Get, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED), 1);
    EXPECT_FALSE(connector.ExecuteInstanceMethod(L"SELECT * FROM Item", L"Do", true, {}, &table));
    EXPECT_THAT(log.Lines(Level::Error).back(), testing::HasSubstr("deriving __CLASS property"));
    EXPECT_THAT(paths, testing::IsEmpty());
}

}  // namespace quillon::test
