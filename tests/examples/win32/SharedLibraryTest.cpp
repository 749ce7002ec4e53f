// The system's access lists; Linux has modes, which ModuleLoaderTest.cpp changes.
#include <gmock/gmock.h>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include "support/TempDir.h"
#include "system/SharedLibrary.h"

namespace quillon::test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

void SetAccess(const std::filesystem::path& path, const wchar_t* list) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(
        ::ConvertStringSecurityDescriptorToSecurityDescriptorW(list, SDDL_REVISION_1, &descriptor, nullptr));
    ASSERT_TRUE(::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor));
    ::LocalFree(descriptor);
}

}  // namespace

using ForeignWriter = TempDirTest;

TEST_F(ForeignWriter, IsFoundInTheAccessListsOfTheFileAndOfItsDirectories) {
    dir.Write("modules\\a.dll", "");
    const auto file = dir.Native("modules\\a.dll");
    EXPECT_THAT(agent::FindForeignWriter(file.string()), IsEmpty());
    const struct {
        const char* path;
        const wchar_t* open;  // everybody (WD) may write, or read only
        bool isRefused;
    } cases[] = {
        {"modules\\a.dll", L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FW;;;WD)", true},
        {"modules\\a.dll", L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FR;;;WD)", false},
        {"modules", L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;WD)", true},
        {"modules", L"D:P(A;;FA;;;SY)(A;;FA;;;BA)(A;;FRFX;;;WD)", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.path << ' ' << c.isRefused);
        SetAccess(dir.Native(c.path), c.open);
        const std::string fault = agent::FindForeignWriter(file.string());
        if (c.isRefused) {
            EXPECT_THAT(fault, HasSubstr("S-1-1-0"));
        } else {
            EXPECT_THAT(fault, IsEmpty());
        }
    }
    EXPECT_THAT(agent::FindForeignWriter(dir.Native("missing.dll").string()), HasSubstr("missing.dll: "));
}

}  // namespace quillon::test
