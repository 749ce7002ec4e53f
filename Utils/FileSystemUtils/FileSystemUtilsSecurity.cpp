#include <filesystem>
#include <string>
#include <system_error>

#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/KeptError.h"
#include "platform/SecurityApi.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr const wchar_t* kSecurityPrivilege = L"SeSecurityPrivilege";
constexpr const wchar_t* kRestorePrivilege = L"SeRestorePrivilege";

/// The codes of the last error.
class LastErrorCategory final : public std::error_category {
public:
    const char* name() const noexcept override { return "last error"; }
    std::string message(int code) const override { return platform::ErrorCodeText(code).value_or(""); }
};

/// Returns the last error. An exception has to carry it, because a throw may lose it.
std::error_code LastErrorCode() {
    // Never destroyed: an exception may outlive static objects.
    static const LastErrorCategory& category = *new LastErrorCategory;
    return {static_cast<int>(platform::LastError()), category};
}

/// Reports the text that callers know, whatever the text of the local C++ library is.
class CopyError final : public std::filesystem::filesystem_error {
public:
    CopyError() : filesystem_error("copy", LastErrorCode()) {}
    const char* what() const noexcept override { return "copy(p1, p2): invalid arguments"; }
};

void Drop(const wchar_t* privilege) {
    const platform::KeptError whyTheCopyFailed;
    platform::SetPrivilege(privilege, false);
}

bool CopySecurity(const std::string& source, const std::string& destination) {
    constexpr std::size_t kLargestDescriptor = 260;
    const auto security = platform::ReadSecurity(source, kLargestDescriptor);
    if (!security) return false;
    if (platform::WriteSecurity(destination, *security)) return true;
    const platform::KeptError error;
    if (ICLogger* const logger = detail::RegisteredLogger()) {
        logger->Error(
            "Unable to copy file security and ownership to '%s' despite process SE_SECURITY_NAME, "
            "SE_RESTORE_NAME privileges.",
            LogText::OneLine(destination).c_str());
    }
    return false;
}

}  // namespace

bool FileSystemUtils::FileCopy(const std::string& source, const std::string& destination) {
    if (!Exists(source)) return false;
    if (!platform::CopyFileOver(source, destination)) throw CopyError();
    return CopyFileAcl(source, destination) && Exists(destination);
}

bool FileSystemUtils::CopyFileAcl(const std::string& source, const std::string& destination) {
    if (!SetProcessPrivilege(kSecurityPrivilege, true)) return false;
    const DestructorFunctor dropSecurity([] { Drop(kSecurityPrivilege); });
    if (!SetProcessPrivilege(kRestorePrivilege, true)) return false;
    const DestructorFunctor dropRestore([] { Drop(kRestorePrivilege); });
    return CopySecurity(source, destination);
}

bool FileSystemUtils::SecureFile(const std::string& path) { return platform::RestrictToCurrentUser(path); }

bool FileSystemUtils::SetProcessPrivilege(const wchar_t* name, bool enable) {
    return platform::SetPrivilege(name, enable);
}

}  // namespace quillon
