#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/ErrorText.h"
#include "platform/RegistryApi.h"
#include "quillon/MiscUtils.h"
#include "quillon/RegistryUtils.h"
#include "simulation/machine/MachineRegistry.h"

namespace quillon {

namespace {

constexpr const char* kPath = "SOFTWARE\\Quillon\\Test";
constexpr const char* kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

class MachineRegistry : public testing::Test {
protected:
    MachineRegistry() { m_hive.SetValue(kPath, "Empty", ""); }
    ~MachineRegistry() override {
        m_hive.RemoveKey(kPath);
        simulation::AddMachineFacts(m_hive);
    }

    simulation::Registry& m_hive = simulation::LocalMachine();
};

}  // namespace

TEST_F(MachineRegistry, ValuesAreReadAsTheSystemReadsThem) {
    const struct {
        const char* what;
        std::string bytes, text;
        long long number;  // below 0: not read
    } cases[] = {
        {"one zero is dropped", std::string("abc\0", 4), "abc", 0x00636261},
        {"only one", std::string("ab\0\0", 4), std::string("ab\0", 3), 0x6261},
        {"no zero", "abcd", "abcd", 0x64636261},
        {"fewer than four bytes", "\x07", "\x07", 7},
        {"more than four bytes", "abcde", "abcde", -1},
        {"nothing", "", "", 0},
    };
    const auto handle = platform::OpenMachineKey("software\\QUILLON\\test");
    const RegKey key{kPath, handle.Get()};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        m_hive.SetValue(kPath, "Value", c.bytes);
        std::string text = "before";
        EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "vALUE", text));
        EXPECT_EQ(text, c.text);
        unsigned long number = 99;
        EXPECT_EQ(RegistryUtils::ReadWindowsRegistryValue(key, "Value", number), c.number >= 0);
        EXPECT_EQ(number, c.number >= 0 ? static_cast<unsigned long>(c.number) : 99);
    }
}

TEST_F(MachineRegistry, FailuresAreReadAsAbsentOrReported) {
    const auto handle = platform::OpenMachineKey(kPath);
    const RegKey key{kPath, handle.Get()};
    std::string text = "before";
    unsigned long number = 99;
    EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "Absent", text));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(RegistryUtils::ReadWindowsRegistryValue(key, "Absent", number));
    m_hive.SetValue(kPath, "Number", std::string("\1\0\0\0", 4));
    m_hive.FailNext(5);
    EXPECT_FALSE(RegistryUtils::ReadWindowsRegistryValue(key, "Number", number));
    EXPECT_EQ(number, 99U);
    EXPECT_TRUE(RegistryUtils::ReadWindowsRegistryValue(key, "Number", number));
    EXPECT_EQ(number, 1U);

    std::uint32_t size = 3;
    char buffer[4];
    EXPECT_EQ(platform::QueryValue(key.handle, "Number", buffer, size), 234U);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(platform::QueryValue(nullptr, "Number", buffer, size), 6U);
    EXPECT_FALSE(platform::OpenMachineKey("SOFTWARE\\Quillon"));
    EXPECT_EQ(platform::LastError(), 2U);
}

TEST_F(MachineRegistry, SystemVersionFollowsTheRegistry) {
    m_hive.SetValue(kCurrentVersion, "CurrentMajorVersionNumber", std::string("\x0A\0\0\0", 4));
    m_hive.SetValue(kCurrentVersion, "CurrentMinorVersionNumber", std::string("\x01\0\0\0", 4));
    m_hive.SetValue(kCurrentVersion, "CurrentBuildNumber", std::string("22631x\0", 7));
    m_hive.SetValue(kCurrentVersion, "UBR", std::string("\x10\x0E\0\0", 4));
    const Version reported = MiscUtils::OsVersion();
    EXPECT_EQ(reported.Patch(), 22631);
    EXPECT_EQ(reported.Build(), 3600);
    // A kernel before 6.2 keeps its own numbers.
    EXPECT_EQ(reported.to_string(), reported.Major() < 6 ? reported.to_string() : "10.1.22631.3600");

    m_hive.RemoveValue(kCurrentVersion, "UBR");
    EXPECT_EQ(MiscUtils::OsVersion().Build(), 0);
    m_hive.RemoveKey(kCurrentVersion);
    const Version bare = MiscUtils::OsVersion();
    EXPECT_TRUE(bare.Valid());
    EXPECT_EQ(bare.Patch(), 0);
    EXPECT_GT(bare.Major(), 2);
}

TEST_F(MachineRegistry, ReadersSeeWholeValuesWhileAnotherThreadWrites) {
    std::atomic<bool> done = false;
    m_hive.SetValue(kPath, "Value", std::string(100, 'a'));
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i)
            m_hive.SetValue(kPath, "Value", std::string(100, i % 2 == 0 ? 'a' : 'b'));
        done = true;
    });
    while (!done) {
        const auto handle = platform::OpenMachineKey(kPath);
        std::string text;
        ASSERT_TRUE(RegistryUtils::ReadWindowsRegistryValue({kPath, handle.Get()}, "Value", text));
        ASSERT_EQ(text, std::string(100, text.front()));
    }
    writer.join();
}

}  // namespace quillon
