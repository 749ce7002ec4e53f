#include "quillon/MethodMetadataBuilder.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/Module.h"
#include "quillon/ServiceLocator.h"
#include "support/RecordingLogger.h"

namespace quillon {
namespace {

using ::testing::ElementsAre;
using M = IMethodMetadata;

class MethodMetadataBuilding : public ::testing::Test {
protected:
    MethodMetadataBuilding() {
        Forget<IMethodParameterBuilder>();  // those of a host in an earlier test
        Forget<IMethodColumnBuilder>();
        ServiceLocator::AddFactory<IMethodParameterBuilder>(
            [this] { return ++m_living, new MethodParameterBuilder; },
            [this](IMethodParameterBuilder* builder) { --m_living, delete builder; });
        ServiceLocator::AddFactory<IMethodColumnBuilder>(
            [this] { return ++m_living, new MethodColumnBuilder; },
            [this](IMethodColumnBuilder* builder) { --m_living, delete builder; });
    }
    ~MethodMetadataBuilding() override {
        Forget<IMethodParameterBuilder>();
        Forget<IMethodColumnBuilder>();
    }

    template <class T>
    static void Forget() {
        if (ServiceLocator::HasFactory<T>()) ServiceLocator::RemoveFactory<T>();
    }

    /// Name, type and default of every parameter; name, type and '*' of every alternative column.
    static std::vector<std::string> Items(const M& method) {
        std::vector<std::string> items;
        method.VisitParameter([&items](const char* name, const MethodParameter& parameter) {
            Variant value;
            items.push_back(std::string(name) + ":" + parameter.Type());
            if (parameter.GetOptionalValue(value)) items.back() += "=" + value.AsString();
        });
        method.VisitColumn([&items](const char* name, const MethodColumn& column) {
            items.push_back(std::string(name) + ":" + column.Type() + (column.Alternative() ? "*" : ""));
        });
        return items;
    }

    test::RecordingLogger m_log;
    int m_living = 0;
};

TEST_F(MethodMetadataBuilding, ChainDescribesAMethodInTheOrderOfBinding) {
    MethodMetadataBuilder builder;
    builder.MethodName("Files.Find");
    builder.Description("Finds.").Example("find").Warning("w").Note("n").Flags({M::IntensiveIO});
    builder.CreateParameter("never bound", typeid(bool));
    const DataTable table;
    builder.CreateParameter("text", typeid(std::string)).OptionalValue("*.txt").BindParameter();
    builder.CreateParameter("limit", typeid(long long)).OptionalValue(7).BindParameter();
    builder.CreateParameter("most", typeid(long long)).OptionalValue(~std::size_t{0}).BindParameter();
    builder.CreateParameter("ratio", typeid(double)).OptionalValue(0.5f).BindParameter();
    builder.CreateParameter("deep", typeid(bool)).OptionalValue(true).BindParameter();
    builder.CreateParameter("rows", typeid(std::string)).OptionalValue("rows", &table).BindParameter();
    builder.CreateColumn("Name", typeid(std::string), true).Note("n").BindColumn();
    builder.CreateColumn("Size", typeid(long long), false).Deprecated(M::V4_0, "x").BindColumn();
    const std::unique_ptr<M> method = builder.Build();
    EXPECT_THAT(Items(*method),
                ElementsAre("text:string=*.txt", "limit:integer=7", "most:integer=9223372036854775807",
                            "ratio:float=0.5", "deep:boolean=true", "rows:unknown=null", "Name:string*",
                            "Size:integer"));
    EXPECT_STREQ(method->MethodName(), "Files.Find");
    EXPECT_TRUE(method->HasFlags() && method->HasWarnings() && method->HasNotes());
    method->VisitParameter([&table](const char* name, const MethodParameter& parameter) {
        const bool isTable = std::string(name) == "rows";
        EXPECT_EQ(parameter.OptionalTable(), isTable ? &table : nullptr);
        EXPECT_EQ(parameter.TypeInfoHashCode() == typeid(const DataTable*).hash_code(), isTable);
    });
    EXPECT_EQ(m_living, 2);  // the last of each kind
    EXPECT_EQ(builder.Build(), nullptr);
    EXPECT_THROW(builder.Note("late"), std::logic_error);
}

TEST_F(MethodMetadataBuilding, ContradictionsComeFromTheCallThatMakesThem) {
    MethodMetadataBuilder builder;
    EXPECT_THROW(builder.CreateParameter("A", typeid(long long)).OptionalValue("text"), std::runtime_error);
    builder.CreateParameter("A", typeid(bool)).BindParameter();
    IMethodParameterBuilder& second = builder.CreateParameter("A", typeid(bool)).Deprecated(M::V2_0, "");
    EXPECT_THROW(second.Deprecated(M::V2_0, ""), std::runtime_error);
    EXPECT_THROW(second.BindParameter(), std::runtime_error);
    EXPECT_EQ(m_log.Lines(ICLogger::Level::Error).back(), "Parameter A has already been inserted");
    EXPECT_THROW(second.Note("n"), std::logic_error);  // it went with the failed binding
    builder.CreateColumn("C", typeid(bool), false).BindColumn();
    EXPECT_THROW(MethodParameterBuilder().BindParameter(), std::logic_error);
    EXPECT_THAT(Items(*builder.Build()), ElementsAre("A:boolean", "C:boolean"));
}

TEST_F(MethodMetadataBuilding, FailingFactoriesLeaveTheCurrentBuilder) {
    MethodMetadataBuilder builder;
    IMethodParameterBuilder& current = builder.CreateParameter("A", typeid(bool));
    const auto create = [&builder] { builder.CreateParameter("B", typeid(bool)); };
    const auto pair = ServiceLocator::RemoveFactory<IMethodParameterBuilder>();
    EXPECT_THROW(create(), std::invalid_argument);  // no factory
    const auto recycle = [pair](IMethodParameterBuilder* object) {
        if (object != nullptr) pair.second(object);
    };
    ServiceLocator::AddFactory<IMethodParameterBuilder>(
        []() -> IMethodParameterBuilder* { throw std::domain_error("busy"); }, recycle);
    EXPECT_THROW(create(), std::domain_error);
    Forget<IMethodParameterBuilder>();
    ServiceLocator::AddFactory<IMethodParameterBuilder>([]() -> IMethodParameterBuilder* { return nullptr; },
                                                        recycle);
    EXPECT_THROW(create(), std::invalid_argument);
    current.BindParameter();
    EXPECT_THAT(Items(*builder.Build()), ElementsAre("A:boolean"));
}

TEST_F(MethodMetadataBuilding, MissingRecyclerLosesTheBuilderButNotTheProcess) {
    std::function<void(void*)> recycler;
    void* lost = nullptr;
    {
        MethodMetadataBuilder builder;
        lost = &builder.CreateColumn("A", typeid(bool), false);
        recycler = ServiceLocator::RemoveFactory<IMethodColumnBuilder>().second;
    }
    EXPECT_EQ(m_living, 1);
    recycler(lost);
}

TEST_F(MethodMetadataBuilding, ItemsWithoutANameOrOfAnUnknownTypeAreRefused) {
    const auto refusal = [](const auto& bind) -> std::string {
        try {
            bind();
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "bound";
    };
    const std::string types = "' is of none of the types integer, boolean, float, string, table, datetime";
    MethodMetadataBuilder builder;
    EXPECT_EQ(refusal([&] { builder.CreateColumn("C", typeid(int), false).BindColumn(); }),
              "Column 'C" + types);
    EXPECT_EQ(refusal([&] { builder.CreateParameter("P", typeid(float)).BindParameter(); }),
              "Parameter 'P" + types);
    EXPECT_EQ(refusal([&] { builder.CreateColumn("", typeid(bool), false).BindColumn(); }),
              "Column without a name");
    EXPECT_EQ(refusal([&] { builder.CreateParameter(nullptr, typeid(bool)).BindParameter(); }),
              "Parameter without a name");
    EXPECT_EQ(refusal([&] { builder.CreateColumn("C", typeid(TimePoint), false).BindColumn(); }), "bound");
    EXPECT_EQ(refusal([] { static_cast<void>(MakeMethod("", M::V5_0, {}, MethodFunction())); }),
              "A method without a name");
}

}  // namespace
}  // namespace quillon
