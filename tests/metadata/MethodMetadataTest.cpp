#include "quillon/MethodMetadata.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "support/RecordingLogger.h"

namespace quillon {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using M = IMethodMetadata;

/// What the visit passes on, "a=b" or "a".
struct Visits {
    std::vector<std::string> seen;
    std::function<void(const char*)> one = [this](const char* text) { seen.push_back(text); };
    std::function<void(const char*, const char*)> two = [this](const char* a, const char* b) {
        seen.push_back(std::string(a) + "=" + b);
    };
};

template <class Item>
std::vector<std::string> Introduced(const Item& item) {
    Visits visits;
    item.VisitIntroduced(visits.two);
    return visits.seen;
}

template <class Item>
std::vector<std::string> Deprecated(const Item& item) {
    Visits visits;
    item.VisitDeprecated(visits.two);
    return visits.seen;
}

std::string Thrown(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

TEST(MethodMetadata, NamesTypesByTheirHash) {
    const struct {
        const std::type_info& type;
        const char* name;
    } cases[] = {{typeid(long long), "integer"}, {typeid(bool), "boolean"},
                 {typeid(double), "float"},      {typeid(std::string), "string"},
                 {typeid(DataTable), "table"},   {typeid(TimePoint), "datetime"},
                 {typeid(int), "unknown"},       {typeid(const DataTable*), "unknown"}};
    for (const auto& c : cases) EXPECT_STREQ(MetadataUtils::Type(c.type.hash_code()), c.name) << c.name;
}

TEST(MethodMetadata, SayingAnythingOfFurtherItemsCounts) {
    MethodMetadata method;
    const char otherEmpty[] = "";
    method.HasAdditionalParameters(otherEmpty);
    method.HasAdditionalColumns("more");
    EXPECT_TRUE(method.HasAdditionalParameters() && method.HasAdditionalColumns());
}

TEST(MethodMetadata, VersionsArePerPlatform) {
    MethodMetadata method;
    method.Introduced(M::V4_0, {});
    EXPECT_THAT(Introduced(method), ElementsAre("Windows=4.0", "Linux=4.0", "MacOS=4.0", "SolarisIntel=4.0",
                                                "SolarisSparc=4.0", "Android=4.0"));
    MethodColumn column;
    column.Introduced(M::NotSpecified, {{M::Linux, M::No}, {M::Android, M::V1_5}});
    EXPECT_THAT(Introduced(column), ElementsAre("Linux=no", "Android=1.5"));
    EXPECT_THROW(column.VisitIntroduced({}), std::bad_function_call);
    method.Deprecated(M::V5_0, "old");
    EXPECT_THAT(Deprecated(method), ElementsAre("5.0=old"));
}

TEST(MethodMetadata, ContradictionsAreLoggedAndThrown) {
    test::RecordingLogger log;
    MethodMetadata method;
    MethodParameter parameter;
    method.Flags({M::IntensiveIO});
    method.BindParameter("100% Path", new MethodParameter);
    method.BindColumn("100% Path", new MethodColumn);  // shares the parameter's name
    parameter.Deprecated(M::V2_0, "");
    const std::function<void()> calls[] = {
        [&] {
            method.Flags({M::IntensiveCPU, M::IntensiveIO});
        },
        [&] {
            parameter.Introduced(M::V2_0, {{M::Windows, M::V3_0}, {M::Windows, M::V3_1}});
        },
        [&] { method.BindParameter("100% Path", new MethodParameter); },
        [&] { method.BindColumn("100% Path", new MethodColumn); },
        [&] { parameter.Deprecated(M::V2_0, nullptr); },
        [&] { MetadataUtils::ThrowAlreadyDeprecated("Path"); },
    };
    std::vector<std::string> thrown;
    for (const auto& call : calls) thrown.push_back(Thrown(call));
    EXPECT_THAT(thrown,
                ElementsAre("Flag 'Intensive I/O' has already been specified",
                            "Platform Windows has already been overridden",
                            "Parameter 100% Path has already been inserted",
                            "Column 100% Path has already been inserted", "Already been marked as deprecated",
                            "Path has already been marked as deprecated"));
    EXPECT_EQ(log.Lines(ICLogger::Level::Error), thrown);
    Visits flags;  // nothing is undone
    method.VisitFlag(flags.one);
    EXPECT_THAT(flags.seen, ElementsAre("Intensive I/O", "Intensive CPU"));
    EXPECT_THAT(Introduced(parameter).front(), "Windows=3.0");
}

TEST(MethodMetadata, UndocumentedTakesNoItemsAndShowsNoVersions) {
    test::RecordingLogger log;
    MethodMetadata method;
    method.Introduced(M::V3_0, {}).Deprecated(M::V4_0, "gone");
    method.Undocumented();
    const std::string undefined = "MethodMetadata is already marked as undefined";
    EXPECT_EQ(Thrown([&] { method.MethodName(""); }), undefined);
    EXPECT_EQ(Thrown([&] { method.BindParameter("p", new MethodParameter); }), undefined);
    EXPECT_EQ(Thrown([&] { method.BindColumn("c", new MethodColumn); }), undefined);
    EXPECT_THAT(log.Lines(), IsEmpty());
    EXPECT_THAT(Introduced(method), IsEmpty());
    EXPECT_THAT(Deprecated(method), IsEmpty());
    EXPECT_NO_THROW(method.Note("still usable"));
}

TEST(MethodMetadata, DefaultsMustHaveTheParametersType) {
    test::RecordingLogger log;
    MethodParameter parameter;
    parameter.SetType(typeid(long long));
    Variant value("kept", 7);
    EXPECT_FALSE(parameter.GetOptionalValue(value));
    EXPECT_EQ(value, Variant("kept", 7));
    const std::string mismatch =
        "mismatched parameter and optional default value types; default value named '";
    const std::string text = typeid(std::string).name();
    EXPECT_EQ(
        Thrown([&] { parameter.OptionalValue(typeid(std::string), Variant("n", "5%s")); }),
        mismatch + "n' is of type " + text + " and has value '5%s', but supplied value is of type " + text);
    EXPECT_EQ(Thrown([&] { parameter.OptionalValue(typeid(bool), Variant()); }),
              mismatch + "' is of type null and has value 'null', but supplied value is of type " +
                  typeid(bool).name());
    const DataTable table;
    EXPECT_EQ(Thrown([&] { parameter.OptionalValue("t", &table); }),
              mismatch + "t' is of type " + typeid(const DataTable*).name() + ".");
    EXPECT_EQ(log.Lines(ICLogger::Level::Error).size(), 3u);
    parameter.OptionalValue(typeid(long long), Variant(5));
    EXPECT_TRUE(parameter.GetOptionalValue(value));
    EXPECT_EQ(value, Variant(5));
}

TEST(MethodMetadata, RefusesWhatItCouldNotShow) {
    MethodMetadata method;
    EXPECT_THROW(method.Flags({static_cast<M::MetadataFlag>(6)}), std::out_of_range);
    EXPECT_THROW(method.Introduced(static_cast<M::MetadataAgentVersion>(12), {}), std::out_of_range);
    EXPECT_THROW(method.Introduced(M::No, {{static_cast<M::MetadataPlatform>(-1), M::No}}),
                 std::out_of_range);
    EXPECT_THROW(method.Deprecated(static_cast<M::MetadataAgentVersion>(-1), ""), std::out_of_range);
    EXPECT_THROW(method.BindParameter("p", nullptr), std::invalid_argument);
    method.BindColumn(nullptr, new MethodColumn);
    EXPECT_EQ(Thrown([&] { method.BindColumn(nullptr, new MethodColumn); }),
              "Column  has already been inserted");
}

}  // namespace
}  // namespace quillon
