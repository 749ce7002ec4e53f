#include "quillon/ParameterBinder.h"

#include <gmock/gmock.h>

#include "support/RecordingLogger.h"

namespace quillon {
namespace {

class ParameterBinding : public testing::Test {
protected:
    /// The message, or "bound". Only the bindings listed in `names` are declared.
    std::string Bind(const std::string& names, bool optional, bool allowAnonymous = false,
                     bool allowUndefined = false) {
        ParameterBinder binder(m_call, allowAnonymous, allowUndefined);
        const auto declared = [&names](char name) { return names.find(name) != std::string::npos; };
        if (declared('T')) binder.AddBinding("T", &m_text, optional);
        if (declared('I')) binder.AddBinding("I", &m_integer, optional);
        if (declared('R')) binder.AddBinding("R", &m_real, optional);
        if (declared('F')) binder.AddBinding("F", &m_flag, optional);
        if (declared('D')) binder.AddBinding("D", &m_table, optional);
        InvocationResult result;
        const bool bound = binder.Bind(result);
        EXPECT_EQ(result.resultCode, bound ? 0 : 2);
        EXPECT_EQ(result.errorMessage.empty(), bound);
        return bound ? "bound" : result.errorMessage;
    }

    test::RecordingLogger m_log;
    MethodParameters m_call;
    std::string m_text = "default";
    long long m_integer = -1;
    double m_real = -1.5;
    bool m_flag = true;
    const DataTable* m_table = nullptr;
    const DataTable m_oneCell{VariantList(Variant("any", "demoted"))};
    const DataTable m_twoRows{VariantList(Variant("a", 1)), VariantList(Variant("a", 2))};
};

TEST_F(ParameterBinding, ConvertsRelatedKinds) {
    m_call.scalars =
        VariantList(Variant("T", TimePoint()), Variant("I", true), Variant("R", 5), Variant("F", 0));
    EXPECT_EQ(Bind("TIRF", true), "bound");
    EXPECT_EQ(m_text, "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(m_integer, 1);
    EXPECT_DOUBLE_EQ(m_real, 5.0);
    EXPECT_FALSE(m_flag);
}

TEST_F(ParameterBinding, WrongTypeResetsMandatoryTargetsOnly) {
    for (const bool optional : {true, false}) {
        SCOPED_TRACE(optional);
        for (const Variant& value : {Variant("T", 1), Variant("I", 1.5), Variant("R", "1.5"),
                                     Variant("F", "true"), Variant::NullVariant("T")}) {
            SCOPED_TRACE(value.GetName());
            m_call.scalars = VariantList(value);
            EXPECT_EQ(Bind(value.GetName(), optional),
                      "Value is wrong data-type for parameter '" + value.GetName() + "'");
        }
        EXPECT_EQ(m_text, optional ? "default" : "");
        EXPECT_EQ(m_integer, optional ? -1 : 0);
        EXPECT_EQ(m_flag, optional);
    }
}

TEST_F(ParameterBinding, AbsentParametersKeepOrResetTheTarget) {
    EXPECT_EQ(Bind("TIRFD", true), "bound");
    EXPECT_EQ(m_text, "default");
    EXPECT_EQ(Bind("I", false), "Missing parameter 'I'");
    EXPECT_EQ(m_integer, 0);
    EXPECT_EQ(Bind("D", false), "Missing parameter 'D'");
    // In order of names, whatever the order of binding.
    EXPECT_EQ(Bind("TI", false), "Missing parameter 'I'");
    m_call.scalars.Add("F", "text");
    EXPECT_EQ(Bind("FT", false), "Value is wrong data-type for parameter 'F'");
}

TEST_F(ParameterBinding, TableOfOneCellStandsForAScalar) {
    m_call.tables = {{"T", &m_oneCell}, {"D", &m_twoRows}};
    EXPECT_EQ(Bind("TD", false), "bound");
    EXPECT_EQ(m_text, "demoted");
    EXPECT_EQ(m_table, &m_twoRows);

    m_call.tables = {{"T", &m_twoRows}};
    EXPECT_EQ(Bind("T", true), "bound");
    EXPECT_EQ(m_text, "demoted");
    EXPECT_EQ(Bind("T", false), "Value is wrong data-type for parameter 'T'");
    m_call.tables = {{"I", &m_oneCell}};
    EXPECT_EQ(Bind("I", true), "Value is wrong data-type for parameter 'I'");
    m_call.tables = {{"I", nullptr}};
    EXPECT_EQ(Bind("I", false), "Value is wrong data-type for parameter 'I'");

    m_call.tables.clear();
    m_call.scalars.Add("D", 1);
    EXPECT_EQ(Bind("D", false), "Value is wrong data-type for parameter 'D'");
}

TEST_F(ParameterBinding, OptionalTargetsTellWhetherTheyWereGiven) {
    std::optional<std::string> text = "former";
    std::optional<long long> integer = 1;
    std::optional<double> real;
    std::optional<bool> flag = true;
    std::optional<const DataTable*> table;
    const auto bind = [&] {
        ParameterBinder binder(m_call, false, false);
        binder.AddOptionalBinding("T", text);
        binder.AddOptionalBinding("I", integer);
        binder.AddOptionalBinding("R", real);
        binder.AddOptionalBinding("F", flag);
        binder.AddOptionalBinding("D", table);
        InvocationResult result;
        return binder.Bind(result) ? "bound" : result.errorMessage;
    };
    EXPECT_EQ(bind(), "bound");
    EXPECT_FALSE(text || integer || real || flag || table);

    m_call.scalars = VariantList(Variant("I", true), Variant("R", 5), Variant("F", 0));
    m_call.tables = {{"T", &m_oneCell}, {"D", &m_twoRows}};
    EXPECT_EQ(bind(), "bound");
    EXPECT_TRUE(text == "demoted" && integer == 1 && real == 5.0 && flag == false && table == &m_twoRows);

    m_call.tables = {{"T", &m_twoRows}};
    EXPECT_EQ(bind(), "Value is wrong data-type for parameter 'T'");
    EXPECT_FALSE(text);
}

TEST_F(ParameterBinding, UndeclaredAndAnonymousParametersNeedPermission) {
    m_call.scalars = VariantList(Variant("X", 1), Variant(2), Variant(3));
    EXPECT_EQ(Bind("T", true), "Undefined parameter named 'X'");
    EXPECT_EQ(Bind("T", true, false, true), "bound");
    m_call.scalars.Remove("X");
    EXPECT_EQ(Bind("T", true), "Anonymous parameters are not allowed for this method");
    EXPECT_EQ(Bind("T", true, true), "bound");

    m_call.scalars.Clear();
    m_call.tables = {{"", &m_twoRows}, {"Y", &m_twoRows}};
    EXPECT_EQ(Bind("T", true), "Anonymous (table) parameters are not allowed for this method");
    EXPECT_EQ(Bind("T", true, true), "Undefined parameter named 'Y'");
    EXPECT_EQ(Bind("T", true, false, true), "bound");
}

TEST_F(ParameterBinding, RepetitionIsAlwaysRefused) {
    m_call.scalars = VariantList(Variant("T", "x"), Variant("A", 1), Variant("A", 1));
    EXPECT_EQ(Bind("T", true), "Undefined parameter named 'A'");
    EXPECT_EQ(Bind("T", true, false, true), "Parameter 'A' is specified more than once");
    m_call.scalars = VariantList(Variant("T", "x"));
    m_call.tables = {{"T", &m_oneCell}};
    EXPECT_EQ(Bind("T", true), "Parameter 'T' is specified more than once");

    std::string former = "untouched", later;
    m_call.tables.clear();
    ParameterBinder binder(m_call, false, false);
    binder.AddOptionalBinding("T", former);
    binder.AddMandatoryBinding("T", later);  // a binding that is repeated replaces the former
    InvocationResult result;
    EXPECT_TRUE(binder.Bind(result) && later == "x" && former == "untouched");
}

TEST_F(ParameterBinding, NamesAllFaultsWhenTheyAreWanted) {
    const DataTable anonymous;
    m_call.scalars = VariantList(Variant("X", 1), Variant("F", "text"), Variant("X", 2), Variant("X", 3));
    m_call.scalars.Add("", 1);
    m_call.tables = {{"", &anonymous}};
    ParameterBinder binder(m_call, false, false);
    binder.AddMandatoryBinding("I", m_integer);
    binder.AddOptionalBinding("F", m_flag);
    InvocationResult result;
    EXPECT_FALSE(binder.Bind(result, ParameterFaults::All));
    EXPECT_EQ(result.resultCode, 2);
    EXPECT_EQ(
        result.errorMessage,
        "Value is wrong data-type for parameter 'F'; Missing parameter 'I'; Undefined parameter named 'X'; "
        "Anonymous parameters are not allowed for this method; "
        "Anonymous (table) parameters are not allowed for this method; "
        "Parameter 'X' is specified more than once");
    EXPECT_FALSE(binder.Bind(result));
    EXPECT_EQ(result.errorMessage, "Value is wrong data-type for parameter 'F'");
}

TEST_F(ParameterBinding, CountsTheFaultsOfACallThatHasTooMany) {
    for (int i = 0; i < 20'000; ++i) m_call.scalars.Add("p" + std::to_string(i), i);
    InvocationResult result;
    EXPECT_FALSE(ParameterBinder(m_call, false, false).Bind(result, ParameterFaults::All));
    EXPECT_THAT(result.errorMessage, testing::StartsWith("Undefined parameter named 'p0'; "));
    EXPECT_THAT(result.errorMessage, testing::EndsWith("'p19'; and 19980 more"));
}

}  // namespace
}  // namespace quillon
