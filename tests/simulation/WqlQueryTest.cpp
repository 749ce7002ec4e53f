#include "simulation/wql/WqlQuery.h"

#include <gmock/gmock.h>

#include <map>

#include "base/Utf.h"
#include "quillon/Wql.h"
#include "simulation/WbemCode.h"
#include "support/Split.h"

namespace quillon {

namespace {

using base::ToWide;
using simulation::Code;
using simulation::WqlQuery;

class WqlQueryTest : public testing::Test {
protected:
    WqlQueryTest() {
        m_object[L"Name"] = _variant_t(LR"(Abc d\e'f"g)");
        m_object[L"Big"] = _variant_t(L"18446744073709551615");
        m_object[L"Low"] = _variant_t(L"-9223372036854775808");
        m_object[L"Count"].vt = VT_I4;
        m_object[L"Count"].lVal = 10;
        m_object[L"Real"] = _variant_t(0.5);
        m_object[L"On"] = _variant_t(true);
        m_object[L"When"] = _variant_t(L"20260102030405.000000+000");
        m_object[L"Gone"].vt = VT_NULL;
        m_object[L"List"].vt = VT_ARRAY | VT_BSTR;
    }

    bool Matches(const std::string& condition) {
        EXPECT_EQ(m_query.Parse(ToWide("SELECT * FROM C WHERE " + condition)), 0) << condition;
        return m_query.Matches([this](std::wstring_view name) {
            const auto found = m_object.find(std::wstring(name));
            return found == m_object.end() ? nullptr : &found->second;
        });
    }

    std::map<std::wstring, _variant_t> m_object;
    WqlQuery m_query;
};

std::string Repeat(const std::string& unit, std::size_t count) {
    std::string text;
    while (count-- > 0) text += unit;
    return text;
}

}  // namespace

TEST_F(WqlQueryTest, ConditionsThatHold) {
    const std::string cases[] = {
        R"(Name = 'aBC D\\e\'f\"g')", R"("abc d\\e'f\"g"=Name)", "Name < 'b'", "Name >= 'ABC'", "'b' > Name",
        "Name <> 5", "NOT Name < 5", "Big = 18446744073709551615", "Big > 18446744073709551614",
        "Big < 18446744073709551616", "Big > -1", "Big < 1.9e19", "Low = -9223372036854775808",
        "Low < -9223372036854775807", "Low > -1e300", "Count = '10'", "Count = 1E1", "Count != '10x'",
        "Count > 9.5", "10 <= Count", "Real < 1", "On = TRUE", "On = 'true'", "On = 1", "Count = TRUE",
        "On > false", "When >= '20260102'", "When = '20260102040405.000000+060'",
        "When < '20260102030405.000001+000'", "When > '20260102040404.999999+060'", "Gone IS NULL",
        "Gone = NULL", "NULL = Missing", "Count IS NOT NULL", "Count <> NULL", "List IS NOT NULL",
        // What binds more strongly.
        "Count = 1 AND Count = 2 OR Count = 10", "Count = 10 OR Count = 1 AND Count = 2",
        "NOT Count = 1 AND Count = 10", "not (Count = 1 OR Count = 2)", "NOT NOT Count=10",
        // Nothing known, and yet decided.
        "Gone = 1 OR Count = 10", "NOT (Gone = 1 AND Count = 1)",
        // Deep and long.
        Repeat("(", 200'000) + "Count=10" + Repeat(")", 200'000), Repeat("NOT ", 200'000) + "Count=10",
        Repeat("Count=1 OR ", 100'000) + "Count=10"};
    for (const std::string& c : cases) EXPECT_TRUE(Matches(c)) << c.substr(0, 80);
}

TEST_F(WqlQueryTest, ConditionsThatDoNot) {
    const std::string cases[] = {
        "Name = 'abc'", "Name > 5", "Name <= 5", "Big = 18446744073709551614", "Big = 18446744073709551616",
        "Big <= 9223372036854775807", "Low > -9223372036854775807.5", "Count = 10.5", "Count < '9'", "On = 0",
        "On < 'x'", "Count = 10 AND NOT Count = 10",
        // Neither true nor false.
        "Gone = 1", "Gone <> 1", "NOT Gone = 1", "NOT NOT Gone = 1", "NOT (Gone = 1 OR Count = 1)",
        "Missing LIKE '%'", "Count LIKE '10'", "NOT Count < NULL", "List <> 'a'"};
    for (const std::string& c : cases) EXPECT_FALSE(Matches(c)) << c;
}

TEST_F(WqlQueryTest, WhatIsNoQueryIsRefusedAndLeavesNothing) {
    const std::string front = "SELECT * FROM C WHERE ";
    std::vector<std::string> cases = test::Split(
        "|SELECT|SELECT FROM C|SELECT a, FROM C|SELECT *, a FROM C|SELECT a b FROM C|SELECT * FROM|"
        "SELECT * FROM Like|SELECT * FROM C D|SELECT * FROM C;|SELECT * FROM 1|SELECT * FROM C.D|"
        "SELECT * FROM C WHERE",
        '|');
    for (const std::string& condition : test::Split(
             "a|a=|a=b|1=1|a=1 AND|AND a=1|a=1 b=2|()|(a=1|a=1)|a=1) OR (a=2|NOT|a NOT LIKE 'x'|a LIKE 1|"
             "a LIKE NULL|'x' LIKE a|a IS 1|a IS NOT|a='x|a='x\"|a='x\\'|a='\\x'|a='\\|a=1x|a=1AND b=2|"
             "a=1e|a=.5|a=-|a=0x10|a=1e999|a ! 1|a == 1",
             '|'))
        cases.push_back(front + condition);
    for (const std::string& other : {std::string("SELECT * FROM C\0", 16), front + std::string("a='\0'", 6),
                                     front + Repeat("(", 1'000'000), front + "a='" + Repeat("x", 1'000'000)})
        cases.push_back(other);
    for (const std::string& c : cases) {
        SCOPED_TRACE(c.substr(0, 80));
        EXPECT_EQ(m_query.Parse(ToWide(c)), Code(WBEM_E_INVALID_QUERY));
        EXPECT_EQ(m_query.ClassName(), L"");
    }
    EXPECT_EQ(m_query.Parse(std::wstring(L"SELECT a") + wchar_t{0xD800} + L" FROM C"),
              Code(WBEM_E_INVALID_QUERY));
}

TEST_F(WqlQueryTest, FormsThatAreNotSimulatedAreNoSyntaxErrors) {
    for (const wchar_t* const text : {L"ASSOCIATORS OF {C.a=1}", L"references of {C.a=1} WHERE ClassDefsOnly",
                                      L"SELECT * FROM C WHERE a ISA 'D'"})
        EXPECT_EQ(m_query.Parse(text), Code(WBEM_E_NOT_SUPPORTED));
    EXPECT_EQ(m_query.Parse(L"SELECT references, isa FROM Associators WHERE isa = 1"), 0);
}

TEST_F(WqlQueryTest, TellsWhatIsAskedFor) {
    ASSERT_EQ(m_query.Parse(L"\tselect Name,__PATH ,\n\x00C9t\x00E9 From Win32_X where (A=1)or b is null"),
              0);
    EXPECT_EQ(m_query.ClassName(), L"Win32_X");
    EXPECT_THAT(m_query.Properties(), testing::ElementsAre(L"Name", L"__PATH", L"\x00C9t\x00E9"));
    EXPECT_THAT(m_query.ConditionProperties(), testing::ElementsAre(L"A", L"b"));
}

TEST_F(WqlQueryTest, PatternsMatchAsDocumented) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"", "%", true},
        {"", "_", false},
        {"aXb", "A%B", true},
        {"aXbXc", "a%b", false},
        {"mississippi", "m%iss%ip%i", true},
        {"abc", "a_c", true},
        {"E", "[a-f]", true},
        {"g", "[A=F]", false},
        {"b", "[^a]", true},
        {"=", "[=]", true},
        {"b", "[a-]", false},
        {"^", "[^]", true},
        {"x", "[^]", false},
        {"%_[", "[%][_][[]", true},
        {"x", "[%]", false},
        {"[a", "[a", true},
        {"a", "[]", false},
        {"a]c", "[a]]c", true},
    };
    for (const auto& [text, pattern, matches] : cases) {
        m_object[L"Text"] = _variant_t(ToWide(text).c_str());
        EXPECT_EQ(Matches("Text LIKE '" + std::string(pattern) + "'"), matches)
            << text << " LIKE " << pattern;
    }
    m_object[L"Text"] = _variant_t(std::wstring(20'000, L'a').c_str());
    EXPECT_FALSE(Matches("Text LIKE '" + Repeat("%a", 2'000) + "b'"));
}

TEST_F(WqlQueryTest, QuotedTextsMatchThemselvesOnly) {
    for (const std::string text :
         {"", "'", "\"", "\\", "\\'", "a' OR 'a'='a", "%_[a-b]^]", "\xC3\xA9\xF0\x9F\x98\x80"}) {
        m_object[L"Text"] = _variant_t(ToWide(text).c_str());
        EXPECT_TRUE(Matches("Text = " + WqlQuote(text))) << text;
        EXPECT_TRUE(Matches("Text LIKE '" + WqlLikeEscape(text) + "'")) << text;
        m_object[L"Text"] = _variant_t(ToWide("x" + text).c_str());
        EXPECT_FALSE(Matches("Text LIKE \"" + WqlLikeEscape(text) + '"')) << text;
    }
}

}  // namespace quillon
