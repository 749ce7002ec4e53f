#include "quillon/MiscUtils.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <fstream>
#include <set>

#include "quillon/CLogger.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/Threads.h"

namespace quillon {

namespace {

using test::RecordingLogger;

constexpr const char* kName = "QUILLON_TEST_VARIABLE";

/// The first sixteen callers at once, on a logger that asks for the version itself.
const test::ChildMode versions("versions", [](const std::vector<std::string>&) {
    std::atomic<int> entries = 0;
    ICLogger* const logger = CLogger::SetLoggingCallback([&](ICLogger::Level, const std::string& text) {
        entries +=
            text == "Could not get version; defaulting to '" + MiscUtils::GetVersionNumber(nullptr) + "'";
    });
    std::vector<std::string> results(16);
    test::Threads(16, [&](int i) {
        results[static_cast<std::size_t>(i)] = MiscUtils::GetVersionNumber(logger);
    }).Join();
    const auto right = std::count(results.begin(), results.end(), "1.2.3.4");
    std::printf("%d results, %d entries\n", static_cast<int>(right), entries.load());
    CLogger::ReleaseInstance();
    return 0;
});

std::filesystem::path Library() {
    const auto folder = test::ProgramFolder();
    return test::kWindows ? folder / "quillon.dll" : folder / ".." / "lib" / "libquillon.so";
}

}  // namespace

TEST(MiscUtilsEnvironment, VariablesAreReadSetAndRemoved) {
    const RecordingLogger log;
    bool missing = false;
    EXPECT_EQ(MiscUtils::GetEnvVar(kName, &missing), "");
    EXPECT_TRUE(missing);
    for (const std::string& value : {std::string("a value"), std::string("="), std::string(30'000, 'x')}) {
        SCOPED_TRACE(value);
        EXPECT_TRUE(MiscUtils::SetEnvVar(kName, value.c_str()));
        EXPECT_EQ(MiscUtils::GetEnvVar(kName, &missing), value);
        EXPECT_FALSE(missing);
    }
    EXPECT_TRUE(MiscUtils::SetEnvVar(kName, ""));
    EXPECT_EQ(MiscUtils::GetEnvVar(kName, &missing), "");
    EXPECT_TRUE(missing);
    MiscUtils::UnsetEnvVar(kName);
    EXPECT_EQ(MiscUtils::GetEnvVar(kName, nullptr), "");
    EXPECT_FALSE(MiscUtils::SetEnvVar(nullptr, "x"));
    EXPECT_FALSE(MiscUtils::SetEnvVar("", "x"));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST(MiscUtilsVersion, IsReadOnceAndSaidToBeMissingOnce) {
    const test::ChildOutput output = test::RunChild("versions");
    EXPECT_EQ(output.out, "16 results, 1 entries\n") << output.err;
}

TEST(MiscUtilsVersion, OfFiles) {
    const test::TempDir dir;
    const std::string library = test::ToLibraryPath(Library());
    EXPECT_EQ(MiscUtils::GetFileVersionNumber(library), "1.0.0.0");
    EXPECT_EQ(MiscUtils::GetFileVersionNumber(dir.Path("absent")), "");
    EXPECT_EQ(MiscUtils::GetFileVersionNumber(dir.Path()), "");
}

TEST(MiscUtilsVersion, TextsArePacked) {
    const std::pair<std::string, std::string> cases[] = {
        {"1.2.3.4", "281483566841860"},
        {"1, 2, 3, 4", "281483566841860"},
        {"", "0"},
        {".1", "0"},
        {"1..2", "281474976710656"},
        {"0.0.0.65536", "65536"},
        {"65535.65535.65535.65535", "18446744073709551615"},
        {"0.0.0.18446744073709551616", "0"},
        {std::string(10'000'000, '9'), "0"},
        {"1" + std::string(10'000'000, ' '), "281474976710656"},
        {std::string("1\0"
                     "2",
                     3),
         "281483566645248"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(MiscUtils::PackVersionNumberString(text), expected) << text.substr(0, 30);
}

TEST(MiscUtilsRandom, StaysInItsRangeAndReachesAllOfIt) {
    EXPECT_EQ(MiscUtils::GetRandomNumberInRange(5, 5), 5);
    EXPECT_EQ(MiscUtils::GetRandomNumberInRange(6, 5), 6);
    EXPECT_EQ(MiscUtils::GetRandomNumberInRange(-5, 0), 0);
    EXPECT_EQ(MiscUtils::GetRandomNumberInRange(LONG_MAX, LONG_MIN), LONG_MAX);
    std::set<long> seen;
    for (int i = 0; i < 1000; ++i) seen.insert(MiscUtils::GetRandomNumberInRange(-1, 4));
    EXPECT_THAT(seen, testing::ElementsAre(-1, 0, 1, 2, 3, 4));
    std::set<long> wide;
    for (int i = 0; i < 20; ++i) wide.insert(MiscUtils::GetRandomNumberInRange(LONG_MIN, LONG_MAX));
    EXPECT_EQ(wide.size(), 20U);
}

TEST(MiscUtilsSystem, VersionIsTheSystems) {
    const Version version = MiscUtils::OsVersion();
    EXPECT_TRUE(version.Valid());
    std::string release = "10.0.";
    if (!test::kWindows) {
        std::ifstream file("/proc/sys/kernel/osrelease");
        std::getline(file, release);
    }
    const std::string numbers = std::to_string(version.Major()) + "." + std::to_string(version.Minor()) + ".";
    EXPECT_THAT(release, testing::StartsWith(numbers));
    EXPECT_TRUE(MiscUtils::IsLittleEndian());
}

TEST(MiscUtilsSystem, ModulesAreFoundByAddress) {
    const RecordingLogger log;
    static int variable = 0;
    int local = 0;
    HINSTANCE module = nullptr, again = nullptr;
    EXPECT_TRUE(MiscUtils::GetDllHandle(module, &variable));
    EXPECT_TRUE(MiscUtils::GetDllHandle(again, reinterpret_cast<void*>(&Library)));
    EXPECT_EQ(module, again);
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_FALSE(MiscUtils::GetDllHandle(again, &local));
    EXPECT_EQ(module, again);
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                testing::ElementsAre(testing::StartsWith("Could not get DLL details because: ")));
}

}  // namespace quillon
