#include "quillon/VariantList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <sstream>

#include "support/RecordingLogger.h"

namespace quillon {
namespace {

using ::testing::ElementsAre;

template <class Call>
std::string InvalidArgument(Call call) {
    try {
        call();
    } catch (const std::invalid_argument& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

TEST(VariantList, LookUpsFindTheFirstOfAName) {
    VariantList list;
    list.Add("x", 1);
    list.Add("x", 2);
    list.Add("y", "text");
    EXPECT_EQ(list["x"].GetLongLongValue(), 1);
    EXPECT_TRUE(list.Remove("x"));
    EXPECT_EQ(list, VariantList(Variant("x", 2), Variant("y", "text")));
    EXPECT_FALSE(list.Remove(Variant("x", 2.0)));
    EXPECT_TRUE(list.Remove(Variant("x", 2)));
    EXPECT_FALSE(list.Remove("x"));
    EXPECT_FALSE(list.Contains("Y"));
    EXPECT_TRUE(list.TypeIs(typeid(std::string), 0));
}

TEST(VariantList, RefusesWhatIsNotThere) {
    const VariantList list(Variant("n", 1), Variant("m", 2));
    const std::string longName(300, 'n');
    EXPECT_EQ(InvalidArgument([&] { list[-1]; }), "index -1 out of range");
    EXPECT_EQ(InvalidArgument([&] { list[2]; }), "index 2 out of range");
    EXPECT_EQ(InvalidArgument([&] { list.Get(2ULL); }), "index 2 out of range");
    EXPECT_EQ(InvalidArgument([&] { list["N"]; }), "index 'N' not present");
    EXPECT_EQ(InvalidArgument([&] { list.Get(longName); }), "index '" + longName + "' not present");
    EXPECT_EQ(InvalidArgument([&] { list.TypeIs(typeid(bool), 7); }), "TypeIs index 7 out of range");
    EXPECT_EQ(InvalidArgument([] { VariantList()[0]; }), "index 0 out of range");
}

TEST(VariantList, WalksInOrder) {
    VariantList list(Variant("a", 1), Variant("b", 2));
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetFirst()->GetName(), "a");
    VariantList copy = list;
    EXPECT_EQ(copy.GetNext(), nullptr);
    list.GetNext()->SetLongLongValue(9);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list["b"].GetLongLongValue(), 9);
    list.GetFirst();
    list.Remove("a");
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(VariantList().GetFirst(), nullptr);

    VariantList::const_iterator position;
    EXPECT_EQ(list.cGetFirst(position)->GetName(), "b");
    EXPECT_EQ(list.cGetNext(position), nullptr);
    EXPECT_EQ(VariantList().cGetFirst(position), nullptr);
}

TEST(VariantList, VisitorStopsTheWalk) {
    const VariantList list(Variant("a", 1), Variant("b", 2), Variant("c", 3));
    std::string seen;
    list.VisitItems([&](const Variant& value) {
        seen += value.GetName();
        return value.GetName() != "b";
    });
    EXPECT_EQ(seen, "ab");
    EXPECT_THROW(list.VisitItems({}), std::bad_function_call);
    EXPECT_NO_THROW(VariantList().VisitItems({}));
    EXPECT_THROW(list.VisitItems([](const Variant&) -> bool { throw std::runtime_error("visitor"); }),
                 std::runtime_error);
}

TEST(VariantList, SimilarIgnoresOrderButCounts) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Variant a("a", 1), b("b", 2), notANumber("n", nan);
    const struct {
        const char* what;
        VariantList left, right;
        bool similar;
    } cases[] = {
        {"empty", {}, {}, true},
        {"other order", {a, b}, {b, a}, true},
        {"other counts", {a, a, b}, {a, b, b}, false},
        {"other value of a name", {a, b}, {a, Variant("b", 3)}, false},
        {"other size", VariantList(a), {a, a}, false},
        {"NaN never equals", {a, notANumber}, {a, notANumber}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        // Long rows go another way.
        for (const int padding : {0, 40}) {
            VariantList left = c.left, right;
            for (int i = 0; i < padding; ++i) left.Add("p", i / 2);
            for (int i = padding; i-- > 0;) right.Add("p", i / 2);
            for (const Variant& value : c.right) right.Add(value);
            EXPECT_EQ(left.Similar(right), c.similar);
            EXPECT_EQ(right.NotSimilar(left), !c.similar);
        }
    }
}

TEST(VariantList, SimilarFindsTheOneDifferenceInALongRow) {
    std::vector<Variant> values;
    for (int i = 0; i < 100; ++i) values.emplace_back("c" + std::to_string(i % 7), std::to_string(i / 3));
    values.emplace_back("zero", 0.0);
    values.push_back(Variant::NullVariant("null"));
    VariantList sorted, shuffled;
    for (const Variant& value : values) sorted.Add(value);
    std::shuffle(values.begin(), values.end(), std::mt19937(1));
    for (const Variant& value : values)
        shuffled.Add(value.GetName() == "zero" ? Variant("zero", -0.0) : value);
    EXPECT_TRUE(sorted.Similar(shuffled));
    shuffled.Remove("null");
    shuffled.Add("null", "null");
    EXPECT_FALSE(sorted.Similar(shuffled));
}

TEST(VariantList, JoinsAndQuotes) {
    const VariantList list(Variant("hello world"), Variant("x"), Variant(5), Variant(),
                           Variant("caf\xC3\xA9\xC2\xA0"));
    EXPECT_EQ(list.ToString(", ", "'"), "'hello world', x, 5, null, caf\xC3\xA9\xC2\xA0");
    EXPECT_EQ(list.ToString(nullptr, ""), "hello worldx5nullcaf\xC3\xA9\xC2\xA0");
    EXPECT_EQ(VariantList().ToString(", ", "'"), "");
    EXPECT_EQ(VariantList(Variant("\xC3\xA9")).ToWideString(",", nullptr), L"\x00E9");

    const VariantList options(Variant("-v"), Variant("my file"), Variant(-5), Variant());
    EXPECT_EQ(options.ToDelimitedStrings(' ', '"', true), R"(-v "my file" "-5" "null")");
    EXPECT_EQ(options.ToDelimitedStrings(' ', '"', false), R"("-v" "my file" "-5" "null")");
    std::ostringstream stream;
    stream << VariantList(Variant("a", 1), Variant::NullVariant("b"));
    EXPECT_EQ(stream.str(), "{a=1, b=null}");
}

TEST(VariantList, SurvivesItselfAsArgument) {
    VariantList list(Variant("a", 1));
    for (int i = 0; i < 20; ++i) list.Add(list[0]);
    list.Add(list[0].GetName(), list[0].AsString());
    EXPECT_TRUE(list.Remove(list[0]));
    EXPECT_TRUE(list.Remove(list[0].GetName()));
    VariantList& alias = list;
    list = alias;
    list = std::move(alias);
    EXPECT_EQ(list.Size(), 20u);
    const VariantList taken = std::move(list);
    EXPECT_EQ(list.Size(), 0u);  // NOLINT(bugprone-use-after-move): that is the point
    EXPECT_TRUE(list == VariantList() && list.Similar({}) && list.GetFirst() == nullptr);
    list.Add("again", true);
    EXPECT_EQ(list.ToString(",", nullptr), "true");
}

TEST(VariantList, DumpsBetweenTwoLines) {
    test::RecordingLogger log;
    VariantList list;
    list.AddEmptyCell("100%", typeid(std::string));
    list.Dump("50%d", nullptr, 1);
    VariantList().Dump(nullptr, &log, 99);
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                ElementsAre(" Start of VariantList dump with 1 column(s): 50%d", "  Variant '100%' null",
                            " End of VariantList dump: 50%d",
                            std::string(40, ' ') + "Start of VariantList dump with 0 column(s): ",
                            std::string(40, ' ') + "End of VariantList dump: "));
}

}  // namespace
}  // namespace quillon
