#include "quillon/Variant.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>
#include <vector>

#include "quillon/VariantList.h"
#include "support/RecordingLogger.h"
#include "support/Threads.h"

namespace quillon {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

TimePoint At(std::int64_t ticks) { return TimePoint(TimePoint::duration(ticks)); }

template <class Value>
concept TakesTextAsBoolean = requires(Value value) {
    value.SetBoolValue("false");
};
template <class Value>
concept TakesCharacterAsNumber = requires(Value value) {
    value.SetLongLongValue('C');
};
template <class List>
concept AddsCharacter = requires(List list) {
    list.Add("Drive", 'C');
};

TEST(Variant, ShowsEveryKind) {
    const std::tuple<Variant, std::string, std::string, int, std::string> cases[] = {
        {Variant::NullVariant("n"), "null", "null", 5, "NULL"},
        {Variant("n", "a%sb"), "a%sb", "of type string = 'a%sb'", 3, "TEXT"},
        {Variant("n", -1LL << 63), "-9223372036854775808", "of type long long = '-9223372036854775808'", 1,
         "INTEGER"},
        {Variant("n", true), "true", "of type bool = 'true'", 1, "INTEGER"},
        {Variant("n", 1e20), "1e+20", "of type double = '1e+20'", 2, "FLOAT"},
        {Variant("n", -1.23456789e-300), "-1.23457e-300", "of type double = '-1.23457e-300'", 2, "FLOAT"},
        {Variant("n", 100000.0), "100000", "of type double = '100000'", 2, "FLOAT"},
        {Variant("n", At(15'000'000)), "1970-01-01T00:00:01.500Z",
         "of type time_point = '1970-01-01T00:00:01.500Z'", 3, "TEXT"},
    };
    for (const auto& [value, text, dump, sqlType, sqlName] : cases) {
        SCOPED_TRACE(text);
        const test::RecordingLogger log;
        value.Dump(nullptr, 0);
        EXPECT_THAT(log.Lines(ICLogger::Level::Debug), ElementsAre("Variant 'n' " + dump));
        EXPECT_EQ(value.AsString(), text);
        EXPECT_EQ((std::ostringstream() << value).str(), text);
        EXPECT_EQ(value.SqlType(), sqlType);
        EXPECT_EQ(value.SqlTypeStr(), sqlName);
    }
}

TEST(Variant, EqualityTakesNameNullnessKindAndValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::tuple<const char*, Variant, Variant, bool> cases[] = {
        {"names differ", Variant("n", 5), Variant("m", 5), false},
        {"nulls, whatever is held", Variant::NullVariant("n"), Variant("n", typeid(std::string)), true},
        {"null and not", Variant::NullVariant("n"), Variant("n", 0), false},
        {"integer and double", Variant("n", 5), Variant("n", 5.0), false},
        {"integer and boolean", Variant("n", 1), Variant("n", true), false},
        {"text with a zero", Variant("n", std::string("a\0b", 3)), Variant("n", "a"), false},
        {"zeros of either sign", Variant("n", 0.0), Variant("n", -0.0), true},
        {"NaN", Variant("n", nan), Variant("n", nan), false},
        {"time points", Variant("n", At(7)), Variant("n", At(8)), false},
    };
    for (const auto& [what, left, right, equal] : cases) {
        EXPECT_EQ(left == right, equal) << what;
        EXPECT_EQ(left != right, !equal) << what;
    }
}

TEST(Variant, ReadsRelatedKindsAndRefusesOthers) {
    EXPECT_EQ(Variant(true).GetLongLongValue(), 1);
    EXPECT_FALSE(Variant(0).GetBoolValue());
    EXPECT_TRUE(Variant(-3).GetBoolValue());

    test::RecordingLogger log;
    const std::string wanted = typeid(long long).name(), found = typeid(double).name();
    EXPECT_THAT([] { Variant(1.5).GetLongLongValue(); },
                ThrowsMessage<std::invalid_argument>(wanted + " type was expected"));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre(wanted + " value requested, found " + found + " type"));
    EXPECT_THROW(Variant(5).GetDoubleValue(), std::invalid_argument);
    EXPECT_THROW(Variant("5").GetTimePoint(), std::invalid_argument);
    EXPECT_THROW(Variant(5).GetStringValue(), std::invalid_argument);
}

TEST(Variant, NullHidesTheValueUntilOneIsSet) {
    test::RecordingLogger log;
    Variant value("n", 7);
    value.SetToNull();
    EXPECT_THAT([&] { value.GetLongLongValue(); },
                ThrowsMessage<null_Variant>(std::string(typeid(long long).name()) + " value is null"));
    EXPECT_THAT([&] { value.GetType(); }, ThrowsMessage<null_Variant>("n is null"));
    EXPECT_STREQ(value.GetTypeName(), "null");
    EXPECT_FALSE(value.TypeIs(typeid(long long)));
    EXPECT_EQ(value.TryGet<long long>(), std::nullopt);
    EXPECT_THAT(log.Lines(), ElementsAre());

    value.SetLongLongValue(8);
    EXPECT_EQ(value.TryGet<long long>(), 8);
    EXPECT_EQ(value.TryGet<double>(), std::nullopt);
    EXPECT_TRUE(value.GetType() == typeid(long long));
    EXPECT_TRUE(Variant::StringOrNullVariant("n", "").IsNull());
    EXPECT_EQ(Variant::StringOrNullVariant("n", "x"), Variant("n", "x"));
}

TEST(Variant, BindNameFollowsTheName) {
    Variant value("a-b-c", 1);
    const Variant copy = value;
    value.SetName("plain");
    EXPECT_EQ(value.GetBindName(), "plain");
    EXPECT_EQ(copy.GetBindName(), "a_b_c");
}

TEST(Variant, TimePointAsTextLivesInOneBufferPerThread) {
    const Variant early(At(0)), late(At(10'000'000));
    const std::string& text = early.GetStringValue();
    std::thread([&] { EXPECT_EQ(late.GetStringValue(), "1970-01-01T00:00:01.000Z"); }).join();
    EXPECT_EQ(text, "1970-01-01T00:00:00.000Z");
    late.GetStringValue();
    EXPECT_EQ(text, "1970-01-01T00:00:01.000Z");
    EXPECT_EQ(Variant(TimePoint::min()).GetStringValue(), "");
}

TEST(Variant, PlaceholderOfAnotherTypeIsReportedAndNull) {
    test::RecordingLogger log;
    EXPECT_TRUE(Variant("n", typeid(double)).IsNull());
    EXPECT_THAT(log.Lines(), ElementsAre());
    Variant odd("n", typeid(int));
    EXPECT_TRUE(odd.IsNull());
    Variant("n", typeid(TimePoint));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                ElementsAre("Internal error: unsupported type " + std::string(typeid(int).name()) +
                                " in Variant(,type_info)",
                            HasSubstr("in Variant(,type_info)")));
    odd.SetDoubleValue(1.5);
    EXPECT_DOUBLE_EQ(odd.GetDoubleValue(), 1.5);
}

TEST(Variant, SurvivesMovesAndItself) {
    Variant source("name", std::string(100, 'x'));
    const Variant target = std::move(source);
    EXPECT_EQ(source, Variant());  // NOLINT(bugprone-use-after-move): that is the point
    EXPECT_EQ(Variant(source).AsString(), "null");
    source.SetBoolValue(true);
    EXPECT_EQ(source, Variant(true));

    Variant value = target;
    Variant& alias = value;
    value = alias;
    value = std::move(alias);
    value.SetStringValue(value.GetStringValue());
    value.SetName(value.GetName());
    EXPECT_EQ(value, target);
    value.SetName("a-name-that-is-too-long-for-the-object-itself");
    value.SetName(value.GetBindName());
    EXPECT_EQ(value.GetName(), "a_name_that_is_too_long_for_the_object_itself");
    EXPECT_EQ(value.GetBindName(), value.GetName());
    EXPECT_EQ(Variant(static_cast<const char*>(nullptr)).GetStringValue(), "");
}

TEST(Variant, TakesWhatProgramsHaveAtHand) {
    const std::string_view view = std::string_view("textile").substr(0, 4);
    EXPECT_EQ(Variant("n", view), Variant("n", "text"));
    EXPECT_EQ(Variant("n", std::size_t{7}), Variant("n", 7));
    EXPECT_EQ(Variant("n", std::numeric_limits<unsigned long long>::max()),
              Variant("n", std::numeric_limits<long long>::max()));
    EXPECT_EQ(Variant("n", nullptr), Variant::NullVariant("n"));
    EXPECT_EQ(Variant("n", std::optional<int>()), Variant::NullVariant("n"));
    EXPECT_EQ(Variant("n", std::optional<std::string>("x")), Variant("n", "x"));
    using Seconds = std::chrono::sys_seconds;
    EXPECT_EQ(Variant("n", Seconds(std::chrono::seconds(-2))), Variant("n", At(-20'000'000)));
    const std::chrono::sys_time<std::chrono::nanoseconds> fine(std::chrono::nanoseconds(-1));
    EXPECT_EQ(Variant("n", fine), Variant("n", At(-1))) << "towards the past";
    const auto steady = Variant(std::chrono::steady_clock::now() + std::chrono::hours(1)).GetTimePoint();
    EXPECT_GT(steady, ToTimePoint(std::chrono::system_clock::now() + std::chrono::minutes(59)));
    // Programs write "never" so.
    EXPECT_EQ(ToTimePoint(Seconds::max()), TimePoint::max());
    EXPECT_EQ(ToTimePoint(Seconds::min()), TimePoint::min());
    using Unsigned = std::chrono::sys_time<std::chrono::duration<std::uint64_t>>;
    EXPECT_EQ(ToTimePoint(Unsigned(std::chrono::seconds(2))), At(20'000'000));
    EXPECT_EQ(ToTimePoint(Unsigned::max()), TimePoint::max());
    EXPECT_GT(ToTimePoint(std::chrono::steady_clock::time_point::max()), steady);
    EXPECT_GT(ToTimePoint(std::chrono::file_clock::time_point::max()), steady);

    static_assert(!std::is_constructible_v<Variant, std::string, char>);
    static_assert(!std::is_constructible_v<Variant, std::string, wchar_t>);
    static_assert(!std::is_constructible_v<Variant, std::string, const wchar_t*>);
    static_assert(!TakesTextAsBoolean<Variant>);
    static_assert(!TakesCharacterAsNumber<Variant>);
    static_assert(!AddsCharacter<VariantList>);
}

TEST(Variant, SortsByNameKindAndValueAndHashesAlike) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Variant sorted[] = {
        Variant::NullVariant("a"),
        Variant("a", false),
        Variant("a", true),
        Variant("a", -1.5),
        Variant("a", 1LL << 53),
        Variant("a", 9007199254740992.0),
        Variant("a", (1LL << 53) + 1),
        Variant("a", 9.3e18),
        Variant("a", nan),
        Variant("a", "B"),
        Variant("a", "b"),
        Variant("a", At(-1)),
        Variant("a", At(0)),
        Variant("b", 0),
    };
    for (std::size_t i = 0; i < std::size(sorted); ++i) {
        for (std::size_t j = 0; j < std::size(sorted); ++j)
            EXPECT_EQ(sorted[i] <=> sorted[j], std::weak_ordering(i <=> j))
                << testing::PrintToString(sorted[i]) + " " + testing::PrintToString(sorted[j]);
    }
    EXPECT_EQ(std::hash<Variant>()(Variant("n", 0.0)), std::hash<Variant>()(Variant("n", -0.0)));
    EXPECT_EQ(Variant::NullVariant("n").Hash(), Variant("n", typeid(std::string)).Hash());
    EXPECT_NE(Variant("n", 1).Hash(), Variant("n", true).Hash());
    EXPECT_EQ(testing::PrintToString(Variant("n", 5)), "'n' long long '5'");
}

TEST(Variant, NullRemembersTheKindThatAGetterNames) {
    const auto messageOf = [](const Variant& value, bool boolean) -> std::string {
        try {
            boolean ? static_cast<long long>(value.GetBoolValue()) : value.GetLongLongValue();
        } catch (const null_Variant& error) {
            return error.what();
        }
        return {};
    };
    const std::string integer = std::string(typeid(long long).name()) + " value is null";
    const std::string boolean = std::string(typeid(bool).name()) + " value is null";
    Variant flag("n", true), text("n", "x");
    flag.SetToNull();
    text.SetToNull();
    EXPECT_EQ(messageOf(flag, false), boolean);
    EXPECT_EQ(messageOf(Variant(), true), integer);
    EXPECT_EQ(messageOf(text, false), integer);
    EXPECT_EQ(messageOf(text, true), boolean);
    EXPECT_EQ(messageOf(Variant("n", typeid(bool)), false), boolean);
}

TEST(Variant, NamesAreSharedBetweenThreads) {
    constexpr int kThreads = 4, kRounds = 2000;
    Variant shared("a-name", std::string(50, 'x'));
    std::vector<Variant> kept(kThreads);
    test::Threads(kThreads, [&shared, &kept](int t) {
        for (int round = 0; round < kRounds; ++round) {
            kept[static_cast<std::size_t>(t)] = shared;
            Variant own("a-name", round);
            own.SetName("name " + std::to_string(round % 700));
            own = shared;
        }
    }).Join();
    for (const Variant& value : kept)
        EXPECT_EQ(value.GetBindName() + value.GetStringValue().substr(49), "a_namex");
}

TEST(Variant, DumpIndentsAtMostFortyAndCutsTheLine) {
    testing::internal::CaptureStderr();  // where the line goes without a logger
    Variant("n", "100%").Dump(nullptr, 45);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(40, ' ') + "Variant 'n' of type string = '100%'\n");

    test::RecordingLogger log;
    Variant("n", std::string(2000, '%')).Dump(nullptr, 3);
    const std::string head = "   Variant 'n' of type string = '";
    EXPECT_THAT(log.Lines(), ElementsAre(head + std::string(1023 - head.size(), '%')));

    const test::RecordingLogger cut;
    const std::string before(1021 - head.size(), 'x');
    Variant("n", before + "\xE2\x82\xAC").Dump(nullptr, 3);
    EXPECT_THAT(cut.Lines(), ElementsAre(head + before)) << "no part of a character";
}

}  // namespace
}  // namespace quillon
