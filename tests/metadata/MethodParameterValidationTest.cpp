#include "quillon/MethodParameterValidation.h"

#include <gmock/gmock.h>

#include <functional>

#include "quillon/UserUtils.h"
#include "support/RecordingLogger.h"

namespace quillon {
namespace {

using ::testing::ElementsAre;
using Validation = MethodParameterValidation;

/// "passed", or the message.
std::string Outcome(const std::function<bool(InvocationResult&)>& check) {
    InvocationResult result;
    const bool passed = check(result);
    EXPECT_EQ(result.resultCode, passed ? 0 : 2);
    EXPECT_EQ(result.errorMessage.empty(), passed);
    return passed ? "passed" : result.errorMessage;
}

TEST(MethodParameterValidation, ChecksValues) {
    const std::string absolute =
        "An absolute path (suitable for the platform) is required, not a name, for the 'P' parameter with "
        "value '";
    const std::string drive =
        "A path without a drive specifier is required, for the 'P' parameter with value 'C:\\Temp'";
    const std::string name = "A name is required, not an absolute path, for the 'P' parameter";
    const auto isName = [](const char* value) {
        return Outcome([value](auto& result) { return Validation::IsName("P", value, result); });
    };
    const auto isPath = [](const char* value, bool allow) {
        return Outcome([=](auto& result) { return Validation::IsPath("P", value, result, allow); });
    };
    const auto url = [](const char* value) {
        return Outcome([value](auto& result) { return Validation::ValidUrl("Url", value, result); });
    };
    const auto range = [](long long value) {
        return Outcome([value](auto& result) { return Validation::InRange("P", value, -1, 5, result); });
    };
    const auto oneOf = [](const char* value) {
        return Outcome([value](auto& result) { return Validation::OneOf("P", value, {"a", "b"}, result); });
    };
    const auto notEmpty = [](const char* parameter, const char* value) {
        return Outcome([=](auto& result) { return Validation::NotEmpty(parameter, value, result); });
    };
    const struct {
        std::string outcome, expected;
    } cases[] = {
        {isName("a/b"), "passed"},
        {isName("a\\"), name},
        {isPath("Temp", true), absolute + "Temp'"},
        {isPath("", false), absolute + "'"},
        {isPath("C:\\Temp", false), drive},
        {isPath("C:\\Temp", true), "passed"},
        {isPath("\\\\server\\share", false), "passed"},
        {isPath("\\", false), "passed"},
        {notEmpty("P", " "), "passed"},
        {notEmpty("P", ""), "'P' parameter cannot be empty"},
        {notEmpty(nullptr, ""), "'' parameter cannot be empty"},
        {url("http://host/x"), "passed"},
        {url("abc"), "Url value 'abc' is not valid"},
        {range(-1), "passed"},
        {range(5), "passed"},
        {range(6), "'P' parameter must be between -1 and 5, not 6"},
        {oneOf("b"), "passed"},
        {oneOf("B"), "'P' parameter must be one of 'a', 'b', not 'B'"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.outcome, c.expected) << c.expected;
}

TEST(MethodParameterValidation, OneOfTwoMustBeGiven) {
    const auto exclusive = [](const char* first, const char* second, bool deprecated) {
        return Outcome([=](auto& result) {
            return Validation::MutuallyExclusive("Path", "File", first, second, deprecated, result);
        });
    };
    EXPECT_EQ(exclusive("a", "", true), "passed");
    EXPECT_EQ(exclusive("", "a", true), "passed");
    EXPECT_EQ(exclusive("a", "b", false), "'Path' and 'File' parameters cannot both be used");
    EXPECT_EQ(
        exclusive("", "", true),
        "One and only one of 'Path' or 'File' must be specified and cannot be empty; 'File' is deprecated");
}

TEST(MethodParameterValidation, UserNamesHaveOneOfTwoForms) {
    const std::string downLevel =
        "A down-level logon name must be formatted as 'netbios-domain\\user-account-name'";
    const std::string principal =
        "A user principal name must be formatted as 'user-account-name@machine-or-domain'";
    const std::string either =
        "A user name must be formatted as 'user-account-name@machine-or-domain' or "
        "'netbios-domain\\user-account-name'";
    const struct {
        const char* value;
        std::string expected;
    } cases[] = {
        {"domain\\user", "passed"}, {"user@domain", "passed"}, {"\\user", downLevel}, {"\\", downLevel},
        {"user@", principal},       {"user", either},          {"", either},          {"a\\b\\c", either},
        {"a@b\\c", either}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(
            Outcome([&c](auto& result) { return Validation::ValidateAsUserParameter(c.value, result); }),
            c.expected);
    }
}

TEST(MethodParameterValidation, HugeUserNamesAreSplitInOneGo) {
    for (const std::size_t size : {std::size_t{10'000}, std::size_t{10'000'000}}) {
        SCOPED_TRACE(size);
        const std::string part(size, 'x');
        const auto [matched, domain, user] = UserUtils::SplitDownLevelLogonName(part + "\\" + part);
        EXPECT_TRUE(matched && domain == part && user == part);
        const auto [isPrincipal, name, host] = UserUtils::SplitUserPrincipalName(std::string(size, '@'));
        EXPECT_TRUE(!isPrincipal && name.empty() && host.empty());
        EXPECT_FALSE(std::get<0>(UserUtils::SplitUserPrincipalName(part)));
    }
}

TEST(MethodParameterValidation, DeprecatedParameterFillsAnEmptyValue) {
    test::RecordingLogger log;
    std::string value = "new";
    Validation::UseNonDeprecated("New", "Old", value, "old");
    EXPECT_EQ(value, "new");
    value.clear();
    Validation::UseNonDeprecated("New", "100%s", value, "old");
    EXPECT_EQ(value, "old");
    EXPECT_THAT(log.Lines(ICLogger::Level::Warn),
                ElementsAre("Parameter name '100%s' is deprecated; use 'New' instead"));
}

}  // namespace
}  // namespace quillon
