#include <locale>

#include "WmiFixture.h"
#include "base/Utf.h"
#include "providers/WmiOwners.h"
#include "support/ChildMain.h"

namespace quillon::test {

namespace {

using simulation::WmiCall;
using testing::ElementsAre;

class WmiConnectorTest : public WmiTest {
protected:
    /// What becomes of one value of a class of its own.
    Variant Convert(CIMTYPE type, const _variant_t& value) {
        repository.AddClass(kNamespace, {L"One", {{L"V", type, value}}, {}});
        repository.AddInstance(kNamespace, L"One", {});
        EXPECT_TRUE(connector.ExecuteQuery("SELECT * FROM One", &table));
        return table.GetNumberOfRows() == 1 ? table.begin()->Get("V") : Variant();
    }
};

struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

_variant_t Real(float value) {
    _variant_t number;
    number.vt = VT_R4;
    number.fltVal = value;
    return number;
}

_variant_t Empty(VARTYPE type) {
    _variant_t value;
    value.vt = type;
    return value;
}

}  // namespace

TEST_F(WmiConnectorTest, AValueIsConvertedByItsCimType) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma));
    const std::wstring huge(5'000'000, L'\u00E9');
    const std::tuple<const char*, CIMTYPE, _variant_t, Variant> cases[] = {
        {"8 bits", CIM_SINT8, Number(-128), Variant("V", -128)},
        {"64 bits", CIM_SINT64, L"-9223372036854775808", Variant("V", std::numeric_limits<long long>::min())},
        {"unsigned 64 bits", CIM_UINT64, L"9223372036854775807",
         Variant("V", std::numeric_limits<long long>::max())},
        {"real", CIM_REAL64, _variant_t(-1.5), Variant("V", -1.5)},
        {"true", CIM_BOOLEAN, _variant_t(true), Variant("V", true)},
        {"zeros inside", CIM_STRING, TextVariant(std::wstring_view(L"a\0\u00E9", 3)),
         Variant("V", std::string("a\0\xC3\xA9", 4))},
        {"huge", CIM_STRING, TextVariant(huge), Variant("V", base::ToUtf8(huge))},
        {"no UTF-16", CIM_STRING, L"\xD800x", Variant("V", "\xEF\xBF\xBDx")},
        {"date", CIM_DATETIME, L"20260131183000.250000+060", Variant("V", "2026-01-31T18:30:00.250+01:00")},
        {"character", CIM_CHAR16, Number(65), Variant("V", "65")},
        {"a single value", CIM_SINT32 | CIM_FLAG_ARRAY, Number(1), Variant("V", "(array)")},
        {"NULL", CIM_UINT32, Empty(VT_NULL), Variant::NullVariant("V")},
        {"no object", CIM_OBJECT, Empty(VT_NULL), Variant::NullVariant("V")},
        {"texts", CIM_STRING | CIM_FLAG_ARRAY, Array(VT_BSTR, 0, {L"a", L"b"}), Variant("V", "a, b")},
        {"an absent text", CIM_STRING | CIM_FLAG_ARRAY, Array(VT_BSTR, 0, {L"a", Empty(VT_BSTR)}),
         Variant("V", "a, ")},
        {"from 1", CIM_SINT32 | CIM_FLAG_ARRAY, Array(VT_I4, 1, {Number(7), Number(-8)}),
         Variant("V", "7, -8")},
        {"NULL among them", CIM_SINT32 | CIM_FLAG_ARRAY, Array(VT_VARIANT, 0, {Number(7), Empty(VT_NULL)}),
         Variant("V", "7, 0")},
        {"booleans", CIM_BOOLEAN | CIM_FLAG_ARRAY, Array(VT_BOOL, 1, {_variant_t(true), _variant_t(false)}),
         Variant("V", ", ")},
    };
    for (const auto& [what, type, value, expected] : cases) {
        SCOPED_TRACE(what);
        EXPECT_TRUE(Convert(type, value) == expected) << table.begin()->Get(0).AsString().substr(0, 99);
    }
    std::locale::global(before);
    EXPECT_THAT(log.Lines(), testing::Contains("Unexpected WMI object. Property name: V Type: 11 Index: 2"));
}

TEST_F(WmiConnectorTest, UnsignedNumbersPastTheSignedRangeAreRefusedOrTexts) {
    const _variant_t past(L"18446744073709551615");
    const _variant_t list = Array(VT_BSTR, 0, {L"5", past});
    for (const auto& [type, value] : {std::pair(CIM_UINT64 + 0, past), {CIM_UINT64 | CIM_FLAG_ARRAY, list}})
        EXPECT_THAT([&] { Convert(type, value); },
                    testing::Throws<std::out_of_range>(testing::Property(
                        &std::exception::what, testing::StrEq("stoll argument out of range"))))
            << type;
    connector.SetUint64Policy(WmiConnector::Uint64Policy::Text);
    EXPECT_EQ(Convert(CIM_UINT64, past), Variant("V", "18446744073709551615"));
    EXPECT_EQ(Convert(CIM_UINT64, L"5"), Variant("V", 5));
    EXPECT_EQ(Convert(CIM_UINT64 | CIM_FLAG_ARRAY, list), Variant("V", "5, 18446744073709551615"));
}

TEST_F(WmiConnectorTest, ValuesAreReadByTheirTypeOnRequest) {
    const CIMTYPE kArray = CIM_FLAG_ARRAY;
    const auto small = [](short value) {
        _variant_t number;
        number.vt = VT_I2;
        number.iVal = value;
        return number;
    };
    const std::tuple<CIMTYPE, _variant_t, Variant, Variant> cases[] = {
        {CIM_UINT32, Number(-1), Variant("V", -1), Variant("V", 4294967295LL)},
        {CIM_SINT32, Number(-1), Variant("V", -1), Variant("V", -1)},
        {CIM_CHAR16, small(-1), Variant("V", "-1"), Variant("V", "65535")},
        {CIM_UINT32 | kArray, Array(VT_I4, 3, {Number(-1), Number(7)}), Variant("V", "-1, 7"),
         Variant("V", "4294967295, 7")},
        {CIM_UINT32 | kArray, Array(VT_VARIANT, 0, {Number(-1), Empty(VT_NULL)}), Variant("V", "-1, 0"),
         Variant("V", "4294967295, 0")},
        {CIM_BOOLEAN | kArray, Array(VT_BOOL, 1, {_variant_t(true), _variant_t(false)}), Variant("V", ", "),
         Variant("V", "true, false")},
        {CIM_BOOLEAN | kArray, Array(VT_BOOL, 0, {}), Variant("V", ""), Variant("V", "")},
        {CIM_STRING | kArray, Array(VT_BOOL, 0, {_variant_t(true)}), Variant("V", ""), Variant("V", "")},
        {CIM_OBJECT | kArray, Array(VT_UNKNOWN, 0, {Empty(VT_UNKNOWN)}), Variant("V", ""),
         Variant("V", "(object)")},
        {CIM_REAL32 | kArray, Array(VT_R4, 0, {Real(0.5F)}), Variant("V", "0.5"), Variant("V", "0.5")},
    };
    for (const auto& [type, value, byForm, byType] : cases) {
        SCOPED_TRACE(std::to_string(type) + ' ' + byType.AsString());
        connector.SetValuePolicy(WmiConnector::ValuePolicy::Form);
        EXPECT_EQ(Convert(type, value), byForm);
        connector.SetValuePolicy(WmiConnector::ValuePolicy::Type);
        EXPECT_EQ(Convert(type, value), byType);
    }
}

TEST_F(WmiConnectorTest, ObjectsComeInBatchesOfAHundred) {
    using Lines = std::vector<std::string>;
    const std::string full = "Processing 100 WMI objects";
    const std::pair<int, Lines> cases[] = {{0, {}},
                                           {99, {"Processing 99 WMI objects"}},
                                           {100, {full}},
                                           {200, {full, full}},
                                           {250, {full, full, "Processing 50 WMI objects"}}};
    for (const auto& [count, lines] : cases) {
        SCOPED_TRACE(count);
        AddItems(count);
        log.Forget();
        table = DataTable(VariantList(Variant("old", 1)));
        EXPECT_TRUE(connector.ExecuteQuery(L"SELECT Name FROM Item", &table));
        EXPECT_EQ(table.GetNumberOfRows(), static_cast<unsigned int>(count));
        EXPECT_FALSE(table.DefaultColumnsExist());
        EXPECT_EQ(log.Lines(Level::Trace), lines);
        EXPECT_THAT(log.Lines(Level::Debug), ElementsAre("Executing WMI query 'SELECT Name FROM Item'",
                                                         "Completed WMI query 'SELECT Name FROM Item'"));
    }
}

TEST_F(WmiConnectorTest, SystemPropertiesComeOnRequestOnly) {
    repository.AddClass(kNamespace, {L"Bare", {}, {}});
    repository.AddInstance(kNamespace, L"Bare", {});
    EXPECT_TRUE(connector.ExecuteQueryReturnQualifiers("SELECT * FROM Bare", &table));
    EXPECT_EQ(table.begin()->Get("__CLASS"), Variant("__CLASS", "Bare"));
    EXPECT_TRUE(connector.ExecuteQuery("SELECT * FROM Bare", &table));
    EXPECT_TRUE(table.Empty());
}

TEST_F(WmiConnectorTest, AFailingCallIsReportedOnceAndRowsStay) {
    AddItems(150);
    const std::tuple<WmiCall, unsigned int, const char*, unsigned int> cases[] = {
        {WmiCall::ExecQuery, 0, "executing WQL query", 0},
        {WmiCall::Next, 0, "enumerating WMI result", 0},
        {WmiCall::Next, 1, "enumerating WMI result", 100},
        {WmiCall::GetNames, 3, "enumerating WMI class object property names", 149},
        {WmiCall::Get, 1, "reading WMI class object property value", 150},
    };
    for (const auto& [call, skip, context, rows] : cases) {
        SCOPED_TRACE(context);
        log.Forget();
        repository.FailNext(call, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED), skip);
        const bool isObject = call == WmiCall::GetNames || call == WmiCall::Get;
        EXPECT_EQ(connector.ExecuteQuery("SELECT Name, Number FROM Item", &table), isObject);
        EXPECT_EQ(table.GetNumberOfRows(), rows);
        EXPECT_EQ(connector.LastWmiError(), L"WMI error 0x80041003 - Access is denied");
        EXPECT_THAT(
            log.Lines(Level::Error),
            ElementsAre(std::string("WMI error 0x80041003 - Access is denied (while ") + context + ")"));
        const auto index = testing::Contains(testing::StartsWith("Couldn't accumulate class object "));
        EXPECT_THAT(log.Lines(Level::Debug), testing::Conditional(isObject, index, testing::Not(index)));
    }
}

TEST_F(WmiConnectorTest, TheTextOfACodeHasThreeSources) {
    const std::tuple<bool, std::uint32_t, const wchar_t*> cases[] = {
        {true, 0x80041003, L"WMI error 0x80041003 - Access is denied"},
        {true, 0x80049999, L"WMI error 0x80049999 - Unknown error"},
        {false, 0x80041003, L"WMI error 0x80041003 - Denied by the system"},
        {false, 0x80040201, L"WMI error 0x80040201 - IDispatch error #1"},
        {false, 0x8004FFFF, L"WMI error 0x8004ffff - IDispatch error #65023"},
        {false, 0x80040200, L"WMI error 0x80040200 - Unknown error 0x80040200"},
        {false, 0x80050000, L"WMI error 0x80050000 - Unknown error 0x80050000"},
    };
    for (const auto& [isKnown, code, text] : cases) {
        SCOPED_TRACE(text);
        hasMessages = isKnown;
        repository.FailNext(WmiCall::ExecQuery, static_cast<HRESULT>(code));
        EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Item", &table));
        EXPECT_EQ(connector.LastWmiError(), text);
    }
}

TEST_F(WmiConnectorTest, AConnectionFailsByStepsAndGivesTheFormerUp) {
    const std::tuple<WmiCall, const char*, std::vector<std::string>> cases[] = {
        {WmiCall::CreateLocator, "creating instance of IWbemLocator", {"Failed to create WbemLocator"}},
        {WmiCall::ConnectServer,
         "creating instance of IWbemLocator",
         {"Failed to connect to WMI namespace \"ROOT\\test\", but this is not an error"}},
        {WmiCall::SetProxyBlanket, "setting COM proxy blanket", {}},
    };
    for (const auto& [call, context, tried] : cases) {
        SCOPED_TRACE(context);
        log.Forget();
        repository.FailNext(call, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED));
        EXPECT_FALSE(connector.TryConnect("ROOT\\test"));
        EXPECT_EQ(log.Lines(), tried);
        repository.FailNext(call, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED));
        EXPECT_FALSE(connector.Connect("ROOT\\test"));
        EXPECT_THAT(log.Lines(Level::Error),
                    ElementsAre(testing::HasSubstr(std::string("(while ") + context)));
    }
    EXPECT_TRUE(connector.TryConnect("ROOT\\test") && connector.Disconnect());
    EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Item", &table));
    EXPECT_EQ(connector.LastWmiError(), L"Not connected to WMI");
    EXPECT_EQ(log.Lines().back(), "Cannot execute WMI query as WmiConnector is not connected");
}

TEST_F(WmiConnectorTest, AHangEndsWithTheDeadlineOrTheHostsShutdown) {
    AddItems(200);
    repository.HangAfter(130);
    connector.SetDeadline(2000);
    EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Item", &table));
    EXPECT_EQ(table.GetNumberOfRows(), 130U);
    EXPECT_THAT(log.Lines(Level::Error), ElementsAre(testing::StartsWith("WMI error 0x800705b4 - ")));
    log.Forget();
    connector.SetDeadline(0);
    int looks = 0;
    const Monitor monitor([&looks] { return ++looks == 2; });
    EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Item", &table));
    EXPECT_THAT(log.Lines(Level::Error), ElementsAre(testing::StartsWith("WMI error 0x800704c7 - ")));
    repository.HangAfter(-1);
    EXPECT_TRUE(connector.ExecuteQuery("SELECT * FROM Item", &table));
}

TEST_F(WmiConnectorTest, AVisitorMayStopOrThrow) {
    AddItems(150);
    std::string names;
    EXPECT_TRUE(connector.ExecuteQuery("SELECT Name FROM Item", [&names](const VariantList& row) {
        names += row.Get(0).GetStringValue() + ' ';
        return names.size() < 15;
    }));
    EXPECT_EQ(names, "item0 item1 item2 ");
    EXPECT_THROW(connector.ExecuteQuery("SELECT Name FROM Item", [](const VariantList&) -> bool { throw 1; }),
                 int);
}

TEST_F(WmiConnectorTest, DiagnosticsTellWhatAQueryGaveAndWhatWmiSays) {
    AddItems(3);
    EXPECT_FALSE(connector.ExecuteQuery("SELECT", &table));
    EXPECT_EQ(connector.LastWmiErrorDetails(), L"Operation: ExecQuery; ParameterInfo: SELECT");
    EXPECT_TRUE(connector.ExecuteQuery("SELECT Name FROM Item", &table));
    log.Forget();
    connector.SetDiagnostics(true);
    EXPECT_TRUE(connector.ExecuteQuery("SELECT Name FROM Item", &table));
    EXPECT_THAT(log.Lines(Level::Debug).back(),
                testing::MatchesRegex("The WMI query gave 3 objects in .+ ms"));
    const auto live = [](const std::vector<std::wstring>&) -> std::vector<simulation::WmiValues> {
        throw std::runtime_error("no \xC3\xA9lan");
    };
    repository.AddClass(kNamespace, {L"Live", {{L"Name", CIM_STRING, {}}}, {L"Name"}, {}, live});
    for (const int deadline : {0, 30'000}) {  // the note is the thread's that makes the call
        SCOPED_TRACE(deadline);
        connector.SetDeadline(deadline);
        EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Live", &table));
        EXPECT_THAT(log.Lines(Level::Debug),
                    testing::Contains("WMI tells: Operation: ExecQuery; ProviderName: Live; Description: no "
                                      "\xC3\xA9lan"));
    }
    repository.FailNext(simulation::WmiCall::ExecQuery, static_cast<HRESULT>(WBEM_E_ACCESS_DENIED));
    EXPECT_FALSE(connector.ExecuteQuery("SELECT * FROM Live", &table));
    EXPECT_EQ(connector.LastWmiErrorDetails(), L"");
}

TEST_F(WmiConnectorTest, OneTextIsHadFromAClassOfOneObject) {
    const std::tuple<int, const char*, const char*, std::vector<std::string>> cases[] = {
        {1, "Name", "item0", {}},
        {2, "Name", "", {"Expected a single Name FROM Item"}},
        {1, "*", "", {"Expected a * FROM Item"}},
        {1, "NAME", "", {"No NAME FROM Item"}},
        {1, "Number", "", {"Number FROM Item is not a string"}},
    };
    for (const auto& [items, property, expected, errors] : cases) {
        SCOPED_TRACE(property);
        AddItems(items);
        log.Forget();
        EXPECT_EQ(WmiConnector::GetStringFromWmi("Item", property, kNamespace), expected);
        EXPECT_EQ(log.Lines(Level::Error), errors);
    }
    EXPECT_EQ(WmiConnector::GetStringFromWmi("Item", "Name", L"ROOT\\none"), "");
}

}  // namespace quillon::test
