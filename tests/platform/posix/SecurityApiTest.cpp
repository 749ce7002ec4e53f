#include "platform/SecurityApi.h"
#include "simulation/token/ProcessToken.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>

#include "platform/ErrorText.h"
#include "quillon/FileSystemUtils.h"
#include "support/RecordingLogger.h"
#include "support/TempDir.h"

namespace quillon::platform {
namespace {

using simulation::ProcessToken;

constexpr const wchar_t* kSecurity = L"SeSecurityPrivilege";
constexpr const wchar_t* kRestore = L"SeRestorePrivilege";

class SecurityApi : public test::TempDirTest {
protected:
    SecurityApi() { Give(true, true); }
    ~SecurityApi() override { Give(true, true); }

    static void Give(bool security, bool restore) {
        ProcessToken::Process().Hold(kSecurity, security);
        ProcessToken::Process().Hold(kRestore, restore);
    }

    struct ::stat StatusOfFile(const char* name) const {
        struct ::stat status {};
        EXPECT_EQ(::stat(dir.Native(name).c_str(), &status), 0);
        return status;
    }

    const std::string source = dir.Write("source", "x");
    const std::string target = dir.Path("target");
};

TEST_F(SecurityApi, PrivilegesAreUnknownMissingOrSwitched) {
    EXPECT_TRUE(SetPrivilege(kSecurity, true));
    EXPECT_TRUE(ProcessToken::Process().IsEnabled(kSecurity));
    EXPECT_TRUE(SetPrivilege(kSecurity, false));
    EXPECT_FALSE(ProcessToken::Process().IsEnabled(kSecurity));
    Give(false, true);
    EXPECT_FALSE(SetPrivilege(kSecurity, true));
    EXPECT_EQ(LastError(), 1300u);
    EXPECT_FALSE(SetPrivilege(L"SeNoSuchPrivilege", true));
    EXPECT_EQ(LastError(), 1313u);
}

TEST_F(SecurityApi, CopyTakesModeAndAccessListAlong) {
    // One named user (65534: read) and the mask that such a list needs.
    const unsigned char list[] = {2, 0,   0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                  0, 254, 255, 0,   0,   4,   0,  4, 0,   255, 255, 255, 255, 16, 0,
                                  4, 0,   255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
    const std::string native = dir.Native("source").string();
    ASSERT_EQ(::chmod(native.c_str(), 0640), 0);
    if (::setxattr(native.c_str(), "system.posix_acl_access", list, sizeof(list), 0) != 0) {
        GTEST_SKIP() << "the temporary folder's file system has no access lists";
    }
    EXPECT_TRUE(FileSystemUtils::FileCopy(source, target));
    EXPECT_EQ(StatusOfFile("target").st_mode & 07777U, 0640U);
    std::string copy(sizeof(list), '\0');
    EXPECT_EQ(::getxattr(dir.Native("target").c_str(), "system.posix_acl_access", copy.data(), copy.size()),
              static_cast<::ssize_t>(sizeof(list)));
    EXPECT_EQ(copy, std::string(reinterpret_cast<const char*>(list), sizeof(list)));
    EXPECT_FALSE(ProcessToken::Process().IsEnabled(kSecurity));
    EXPECT_FALSE(ProcessToken::Process().IsEnabled(kRestore));
    EXPECT_TRUE(FileSystemUtils::SecureFile(target));
    EXPECT_EQ(::getxattr(dir.Native("target").c_str(), "system.posix_acl_access", nullptr, 0), -1);
    EXPECT_EQ(StatusOfFile("target").st_mode & 0777U, 0700U);
}

TEST_F(SecurityApi, CopyTakesTheOwnerAlong) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    ASSERT_EQ(::chown(dir.Native("source").c_str(), 1234, 4321), 0);
    EXPECT_TRUE(FileSystemUtils::FileCopy(source, target));
    EXPECT_EQ(StatusOfFile("target").st_uid, 1234U);
    EXPECT_EQ(StatusOfFile("target").st_gid, 4321U);
    EXPECT_TRUE(FileSystemUtils::SecureFile(target));
    EXPECT_EQ(StatusOfFile("target").st_uid, 0U);
}

TEST_F(SecurityApi, WithoutEitherPrivilegeTheFileIsCopiedAndFalseReturned) {
    for (const bool hasSecurity : {true, false}) {
        SCOPED_TRACE(hasSecurity);
        Give(hasSecurity, !hasSecurity);
        const test::RecordingLogger log;
        EXPECT_FALSE(FileSystemUtils::FileCopy(source, target));
        EXPECT_EQ(dir.Read("target"), "x");
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
        EXPECT_FALSE(ProcessToken::Process().IsEnabled(kSecurity));
        EXPECT_TRUE(FileSystemUtils::EraseFile(target, false));
    }
}

TEST_F(SecurityApi, FailureToWriteIsLoggedAndToReadIsNot) {
    const test::RecordingLogger log;
    EXPECT_FALSE(FileSystemUtils::CopyFileAcl(dir.Path("missing"), source));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_FALSE(FileSystemUtils::CopyFileAcl(source, target));
    EXPECT_THAT(log.Lines(ICLogger::Level::Error),
                testing::ElementsAre("Unable to copy file security and ownership to '" + target +
                                     "' despite process SE_SECURITY_NAME, SE_RESTORE_NAME privileges."));
    EXPECT_FALSE(ProcessToken::Process().IsEnabled(kSecurity));
    EXPECT_FALSE(ProcessToken::Process().IsEnabled(kRestore));
    EXPECT_FALSE(ReadSecurity(source, 8));
    EXPECT_EQ(LastError(), 122u);
    EXPECT_FALSE(WriteSecurity(source, "short"));
}

}  // namespace
}  // namespace quillon::platform
