#include "quillon/DescribedBinder.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "quillon/MethodMetadata.h"
#include "support/RecordingLogger.h"

namespace quillon {
namespace {

class DescribedBinding : public testing::Test {
protected:
    DescribedBinding() {
        m_method.MethodName("Sample.Run");
        Describe("text", typeid(std::string));
        Describe("time", typeid(TimePoint)).OptionalValue(typeid(TimePoint), Variant("", TimePoint()));
        Describe("count", typeid(long long)).OptionalValue(typeid(long long), Variant("", 7));
        Describe("ratio", typeid(double)).OptionalValue(typeid(double), Variant("", 0.5));
        Describe("deep", typeid(bool)).OptionalValue(typeid(bool), Variant("", true));
        Describe("rows", typeid(const DataTable*)).OptionalValue("rows", &m_byDefault);
    }

    MethodParameter& Describe(const char* name, const std::type_info& type) {
        auto* const parameter = new MethodParameter;
        parameter->SetType(type);
        m_method.BindParameter(name, parameter);
        return *parameter;
    }
    void AddAll(DescribedBinder& binder) {
        binder.Add("deep", m_flag);
        binder.Add("text", m_text);
        binder.Add("time", m_time);
        binder.Add("count", m_integer);
        binder.Add("ratio", m_real);
        binder.Add("rows", m_table);
    }
    /// What the method's own mistake is called; empty for none.
    template <class Action>
    std::string MistakeOf(const Action& action) {
        DescribedBinder binder(m_call, m_method);
        try {
            action(binder);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return {};
    }

    test::RecordingLogger m_log;
    const DataTable m_byDefault;
    MethodMetadata m_method;
    MethodParameters m_call;
    InvocationResult m_result;
    std::string m_text, m_time;
    long long m_integer = -1;
    double m_real = -1;
    bool m_flag = false;
    const DataTable* m_table = nullptr;
};

TEST_F(DescribedBinding, TakesDefaultsAndOptionalityFromTheDescription) {
    m_call.scalars = VariantList(Variant("text", "given"), Variant("count", 9));
    DescribedBinder binder(m_call, m_method);
    AddAll(binder);
    EXPECT_EQ(m_integer, 7);
    ASSERT_TRUE(binder.Bind(m_result)) << m_result.errorMessage;
    EXPECT_EQ(m_text, "given");
    EXPECT_EQ(m_time, "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(m_integer, 9);
    EXPECT_DOUBLE_EQ(m_real, 0.5);
    EXPECT_TRUE(m_flag);
    EXPECT_EQ(m_table, &m_byDefault);
}

TEST_F(DescribedBinding, NamesEveryFaultOfTheCall) {
    m_call.scalars = VariantList(Variant("count", "x"), Variant("more", 1));
    const std::string faults =
        "Value is wrong data-type for parameter 'count'; Missing parameter 'text'; Undefined parameter named "
        "'more'";
    DescribedBinder binder(m_call, m_method);
    AddAll(binder);
    EXPECT_FALSE(binder.Bind(m_result));
    EXPECT_EQ(m_result.errorMessage, faults);
    EXPECT_EQ(DescribedBinder::FindFaults(m_call, m_method), faults);
    m_method.HasAdditionalParameters("Any.");
    m_call.scalars = VariantList(Variant("text", ""), Variant("more", 1));
    EXPECT_EQ(DescribedBinder::FindFaults(m_call, m_method), "");
}

TEST_F(DescribedBinding, RefusesWhatDiffersFromTheDescription) {
    const std::string method = "Method 'Sample.Run': parameter '";
    EXPECT_EQ(MistakeOf([&](auto& b) { b.Add("texts", m_text); }), method + "texts' is not described");
    EXPECT_EQ(MistakeOf([&](auto& b) { b.Add("count", m_text); }),
              method + "count' is described with another type");
    EXPECT_EQ(MistakeOf([&](auto& b) { b.Add("text", m_table); }),
              method + "text' is described with another type");
    EXPECT_EQ(MistakeOf([&](auto& b) { b.Add("deep", m_flag), b.Add("deep", m_flag); }),
              method + "deep' has two variables");
    const auto forget = [&](auto& b) {
        AddAll(b);
        Describe("late", typeid(bool));
        static_cast<void>(b.Bind(m_result));
    };
    EXPECT_EQ(MistakeOf(forget), method + "late' has no variable");
}

}  // namespace
}  // namespace quillon
