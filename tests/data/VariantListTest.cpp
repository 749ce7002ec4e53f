#include "quillon/VariantList.h"

#include <gmock/gmock.h>

#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "quillon/DataTable.h"
#include "support/RecordingLogger.h"

namespace quillon {
namespace {

using testing::ThrowsMessage;

TEST(VariantList, LookUpsFindTheFirstOfAName) {
    VariantList list(Variant("x", 1), Variant("x", 2), Variant("y", "text"));
    EXPECT_EQ(list["x"].GetLongLongValue(), 1);
    EXPECT_TRUE(list.Remove("x"));
    EXPECT_EQ(list, VariantList(Variant("x", 2), Variant("y", "text")));
    EXPECT_FALSE(list.Remove(Variant("x", 2.0)));
    EXPECT_TRUE(list.Remove(Variant("x", 2)));
    EXPECT_FALSE(list.Remove("x"));
    EXPECT_FALSE(list.Contains("Y"));
    EXPECT_TRUE(list.TypeIs(typeid(std::string), 0));
}

TEST(VariantList, FindsEveryNameAfterChanges) {
    // Names of all lengths up to past two words; many share their first and last character.
    std::vector<std::string> names;
    for (std::size_t i = 0; i < 40; ++i)
        names.push_back("c" + std::to_string(i) + std::string(i % 20, '_') + "x");
    names.insert(names.begin() + 3, "");
    const auto expectAll = [&names](const VariantList& list) {
        ASSERT_EQ(list.Size(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(list.Find(names[i]), &list[static_cast<int>(i)]) << names[i];
            EXPECT_FALSE(list.Contains(names[i] + '_')) << names[i];
        }
    };
    VariantList list;
    for (std::size_t i = 0; i < names.size(); ++i) list.Add(names[i], static_cast<long long>(i));
    expectAll(list);
    for (const std::size_t erased : {0U, 5U, 20U}) {
        SCOPED_TRACE(erased);
        EXPECT_TRUE(list.Remove(names[erased]));
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(erased));
        expectAll(list);
    }
    Variant* const kept = list.GetFirst();
    for (const char* name : {"renamed", "renamed again"}) {
        SCOPED_TRACE(name);  // the second time by the pointer that was kept
        EXPECT_TRUE(list.Contains(names[0]));
        kept->SetName(names[0] = name);
        expectAll(list);
        expectAll(VariantList(list));
    }
    EXPECT_TRUE(list.Remove(names[1]));
    names.erase(names.begin() + 1);
    kept->SetName(names[0] = "after a removal");
    expectAll(list);
    expectAll(VariantList(std::move(list)));
}

TEST(VariantList, RefusesWhatIsNotThere) {
    const VariantList list(Variant("n", 1), Variant("m", 2));
    const std::string longName(300, 'n');
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { list[-1]; }, "index -1 out of range"},
        {[&] { list[2]; }, "index 2 out of range"},
        {[&] { list.Get(2ULL); }, "index 2 out of range"},
        {[&] { list["N"]; }, "index 'N' not present"},
        {[&] { list.Get(longName); }, "index '" + longName + "' not present"},
        {[&] { (void)list.TypeIs(typeid(bool), 7); }, "TypeIs index 7 out of range"},
        {[] { VariantList()[0]; }, "index 0 out of range"},
    };
    for (const auto& [call, message] : cases)
        EXPECT_THAT(call, ThrowsMessage<std::invalid_argument>(message)) << message;
}

TEST(VariantList, WalksInOrder) {
    VariantList list(Variant("a", 1), Variant("b", 2));
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetFirst()->GetName(), "a");
    EXPECT_EQ(VariantList(list).GetNext(), nullptr);
    list.GetNext()->SetLongLongValue(9);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list["b"].GetLongLongValue(), 9);
    list.GetFirst();
    list.Remove("a");
    EXPECT_EQ(list.GetNext(), nullptr);

    VariantList::const_iterator position;
    EXPECT_EQ(list.cGetFirst(position)->GetName(), "b");
    EXPECT_EQ(list.cGetNext(position), nullptr);
    EXPECT_EQ(VariantList().cGetFirst(position), nullptr);
}

TEST(VariantList, VisitorStopsTheWalk) {
    const VariantList list(Variant("a", 1), Variant("b", 2), Variant("c", 3));
    std::string seen;
    list.VisitItems([&](const Variant& value) { return (seen += value.GetName()) != "ab"; });
    EXPECT_EQ(seen, "ab");
    EXPECT_THROW(list.VisitItems({}), std::bad_function_call);
}

TEST(VariantList, SimilarIgnoresOrderButCounts) {
    const Variant a("a", 1), b("b", 2), nan("n", std::numeric_limits<double>::quiet_NaN());
    const struct {
        const char* what;
        VariantList shortLeft, shortRight;
        bool similar;
    } cases[] = {
        {"empty", {}, {}, true},
        {"other order", {a, b}, {b, a}, true},
        {"other counts", {a, a, b}, {a, b, b}, false},
        {"other value of a name", {a, b}, {a, Variant("b", 3)}, false},
        {"other size", VariantList(a), {a, a}, false},
        {"NaN never equals", {a, nan}, {a, nan}, false},
        {"zeros of either sign", {a, Variant("z", 0.0)}, {Variant("z", -0.0), a}, true},
        {"null and its text", {a, Variant::NullVariant("n")}, {Variant("n", "null"), a}, false},
    };
    for (const auto& [what, shortLeft, shortRight, similar] : cases) {
        // Long rows go another way, and those with repeated names a third one.
        for (const auto& [padding, names] : {std::pair(0, 1), std::pair(40, 40), std::pair(40, 1)}) {
            const auto name = [n = names](int i) { return "p" + std::to_string(i % n); };
            VariantList left = shortLeft, right;
            for (int i = 0; i < padding; ++i) left.Add(name(i), i / 2);
            for (int i = padding; i-- > 0;) right.Add(name(i), i / 2);
            for (const Variant& value : shortRight) right.Add(value);
            EXPECT_EQ(left.Similar(right), similar) << what;
            EXPECT_EQ(right.NotSimilar(left), !similar) << what;
        }
    }
}

TEST(VariantList, JoinsAndQuotes) {
    const VariantList list(Variant("hello world"), Variant("x"), Variant(5), Variant(),
                           Variant("caf\xC3\xA9\xC2\xA0"));
    EXPECT_EQ(list.ToString(", ", "'"), "'hello world', x, 5, null, caf\xC3\xA9\xC2\xA0");
    EXPECT_EQ(list.ToString(nullptr, ""), "hello worldx5nullcaf\xC3\xA9\xC2\xA0");
    EXPECT_EQ(VariantList(Variant("\xC3\xA9")).ToWideString(",", nullptr), L"\x00E9");

    const VariantList options(Variant("-v"), Variant("my file"), Variant(-5), Variant());
    EXPECT_EQ(options.ToDelimitedStrings(' ', '"', true), R"(-v "my file" "-5" "null")");
    EXPECT_EQ(options.ToDelimitedStrings(' ', '"', false), R"("-v" "my file" "-5" "null")");
    EXPECT_EQ((std::ostringstream() << VariantList(Variant("a", 1), Variant::NullVariant("b"))).str(),
              "{a=1, b=null}");
}

TEST(VariantList, SurvivesItselfAsArgument) {
    const std::string text(40, 'x');
    VariantList list(Variant("name-of-the-first", text));
    for (int i = 0; i < 20; ++i) list.Add(list[0]);
    list.Add(list[0].GetName(), list[0].GetStringValue());
    for (const Variant& cell : list) EXPECT_EQ(cell, Variant("name-of-the-first", text));
    list.Add(std::move(*list.Find("name-of-the-first")));
    EXPECT_EQ(list[22], list[1]);
    EXPECT_EQ(list[0], Variant());
    EXPECT_TRUE(list.Remove(list[0]));
    EXPECT_TRUE(list.Remove(list[0]));
    EXPECT_TRUE(list.Remove(list[0].GetName()));
    VariantList& alias = list;
    list = alias;
    list = std::move(alias);
    EXPECT_EQ(list.Size(), 20u);
    const VariantList taken = std::move(list);
    // NOLINTNEXTLINE(bugprone-use-after-move): that is the point
    EXPECT_TRUE(list == VariantList() && list.Similar({}) && list.GetFirst() == nullptr);
    list.Add("again", true);
    EXPECT_EQ(list.ToString(",", nullptr), "true");
}

TEST(VariantList, DumpsBetweenTwoLines) {
    test::RecordingLogger log;
    VariantList list;
    list.AddEmptyCell("100%", typeid(std::string));
    list.Dump("50%d", nullptr, 1);
    VariantList(Variant()).Dump(nullptr, &log, 99);
    const std::string indent(40, ' ');
    EXPECT_THAT(log.Lines(ICLogger::Level::Debug),
                testing::ElementsAre(
                    " Start of VariantList dump with 1 column(s): 50%d", "  Variant '100%' null",
                    " End of VariantList dump: 50%d", indent + "Start of VariantList dump with 1 column(s): ",
                    indent + "Variant '*NO NAME*' null", indent + "End of VariantList dump: "));
}

}  // namespace
}  // namespace quillon
