#include "quillon/MetadataExport.h"

#include <gmock/gmock.h>

#include "quillon/MethodMetadata.h"

namespace quillon {
namespace {

using ::testing::HasSubstr;
using M = IMethodMetadata;

/// A method with one parameter and one column, every text of them `text`.
std::string MarkdownWith(const char* text) {
    MethodMetadata method;
    auto* parameter = new MethodParameter;
    parameter->Description(text);
    method.MethodName("m");
    method.BindParameter(text, parameter);
    return ToMarkdown(method);
}

TEST(MetadataExport, JsonTellsEverything) {
    const DataTable table(VariantList(Variant("a", 1), Variant("b", "x")));
    MethodMetadata method;
    method.MethodName("Files.Find");
    method.Description("Finds \"files\".");
    method.Flags({M::IntensiveIO});
    method.Warning("slow");
    method.HasAdditionalParameters("any");
    method.Introduced(M::NotSpecified, {{M::Linux, M::No}}).Deprecated(M::V5_0, "use Search");
    auto* limit = new MethodParameter;
    limit->SetType(typeid(long long));
    limit->OptionalValue(typeid(long long), Variant(10));
    limit->Note("at least 1");
    method.BindParameter("limit", limit);
    auto* rows = new MethodParameter;
    rows->SetType(typeid(const DataTable*));
    rows->OptionalValue("rows", &table);
    method.BindParameter("rows", rows);
    auto* size = new MethodColumn;
    size->Type(typeid(double).hash_code());
    size->Alternative(true);
    method.BindColumn("Size", size);
    EXPECT_EQ(
        ToJson(method),
        R"({"name":"Files.Find","description":"Finds \"files\".","example":"","flags":["Intensive I/O"],)"
        R"("warnings":["slow"],"notes":[],"introduced":{"Linux":"no"},)"
        R"("deprecated":{"version":"5.0","text":"use Search"},"undocumented":false,"parameters":[)"
        R"({"name":"limit","type":"integer","optional":true,"default":10,"description":"","warnings":[],)"
        R"("notes":["at least 1"],"introduced":{},"deprecated":null},)"
        R"({"name":"rows","type":"table","optional":true,"default":[{"a":1,"b":"x"}],"description":"",)"
        R"("warnings":[],"notes":[],"introduced":{},"deprecated":null}],"columns":[)"
        R"({"name":"Size","type":"float","alternative":true,"description":"","warnings":[],"notes":[],)"
        R"("introduced":{},"deprecated":null}],"additionalParameters":"any","additionalColumns":null})");
    EXPECT_EQ(
        ToMarkdown(method),
        "## Files.Find\n\nFinds \"files\".\n\n**Warning:** slow\n\n**Introduced:** Linux no\n\n"
        "**Deprecated** since 5.0: use Search\n\n- Intensive I/O\n\n### Parameters\n\n"
        "| Name | Type | Optional | Default | Description |\n| --- | --- | --- | --- | --- |\n"
        "| limit | integer | yes | 10 | **Note:** at least 1 |\n"
        "| rows | table | yes | \\[{\"a\":1,\"b\":\"x\"}\\] |  |\n\n**And others:** any\n\n### Columns\n\n"
        "| Name | Type | Alternative | Description |\n| --- | --- | --- | --- |\n"
        "| Size | float | yes |  |\n");
}

TEST(MetadataExport, CellsShowTextsAsTheyAre) {
    const std::pair<const char*, const char*> cases[] = {
        {"a|b", "a\\|b"},
        {"a\\|b", "a\\\\\\|b"},
        {"one\r\ntwo\nthree\rfour", "one<br>two<br>three<br>four"},
        {"<script>&lt;", "\\<script\\>\\&lt;"},
        {"see (https://a.example/x_y?b=1&c=~d#e|f*).", "see (<https://a.example/x_y?b=1&c=~d#e%7Cf*>)."},
        {"http://a.example/p_(q) https://", "<http://a.example/p_(q)> https\\://"},
        {"HTTP://a.example/?a&amp;b&c www.b_c", "<HTTP://a.example/?a&amp;amp;b&c> www\\.b\\_c"},
        {"[x](y) *b* _i_ `c` ~s~ $m$", "\\[x\\](y) \\*b\\* \\_i\\_ \\`c\\` \\~s\\~ \\$m\\$"},
        {"\xC3\xA9 \xFF", "\xC3\xA9 \xEF\xBF\xBD"},
        {nullptr, ""}};
    for (const auto& [text, cell] : cases)
        EXPECT_THAT(MarkdownWith(text),
                    HasSubstr(std::string("\n| ") + cell + " | unknown | no |  | " + cell + " |\n"))
            << text;
}

TEST(MetadataExport, ParagraphsAndExamplesKeepTheirShape) {
    MethodMetadata method;
    method.MethodName("m");
    method.Example("a\n```\nb");
    const std::pair<const char*, const char*> cases[] = {
        {"# no heading", "\\# no heading"},   {"- no list", "\\- no list"}, {"12. no list", "12\\. no list"},
        {"2024 is a year", "2024 is a year"}, {"\t no code", "no code"},    {"123", "123"}};
    for (const auto& [text, paragraph] : cases) {
        SCOPED_TRACE(text);
        method.Description(text);
        EXPECT_EQ(ToMarkdown(method),
                  std::string("## m\n\n") + paragraph + "\n\n### Example\n\n````\na\n```\nb\n````\n");
    }
}

TEST(MetadataExport, NullTextsAreEmpty) {
    MethodMetadata method;
    method.MethodName(nullptr);
    method.Description(nullptr);
    method.Example(nullptr);
    method.Note(nullptr);
    method.HasAdditionalColumns(nullptr);
    method.Deprecated(M::V2_0, nullptr);
    method.BindColumn(nullptr, new MethodColumn);
    EXPECT_THAT(ToJson(method), HasSubstr(R"("deprecated":{"version":"2.0","text":""})"));
    EXPECT_THAT(ToMarkdown(method), HasSubstr("| --- | --- | --- | --- |\n|  | unknown | no |  |\n"));
}

}  // namespace
}  // namespace quillon
