#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "base/PathText.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

constexpr const char* kVolume = "C:";
constexpr const char* kCommonData = R"(C:\var\lib)";

bool IsFolder(const std::string& native) {
    struct ::stat status {};
    return ::stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsVolume(const std::string& drive) { return drive == "C:" || drive == "c:"; }

std::uint16_t RandomStart() {
    std::uint16_t value = 0;
    while (::getrandom(&value, sizeof(value), 0) < 0 && errno == EINTR) {
    }
    return value;
}

std::string NumberedName(const std::string& prefix, unsigned number) {
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%04X", number);
    return prefix + digits + ".tmp";
}

/// Tries one name after the other until one is free, beginning anywhere.
template <class Create>
std::optional<std::string> CreateNumbered(const std::string& folder, const std::string& prefix,
                                          const Create& create) {
    constexpr unsigned kNumbers = 0x10000;
    const std::string base = !folder.empty() && !base::IsSeparator(folder.back()) ? folder + '\\' : folder;
    const unsigned start = RandomStart();
    for (unsigned i = 0; i < kNumbers; ++i) {
        std::string path = base + NumberedName(prefix, (start + i) % kNumbers);
        const auto native = NativePath(path);
        if (native && create(native->c_str())) return path;
        if (errno != EEXIST) break;
    }
    FailWithErrno();
    return std::nullopt;
}

}  // namespace

std::string SystemPath(const std::string& path) {
    const std::optional<std::string> native = NativePath(path);
    return native.value_or("/nonexistent");
}

std::optional<std::string> TemporaryFolder() {
    const char* const chosen = ::secure_getenv("TMPDIR");
    const bool isUsable = chosen != nullptr && chosen[0] == '/' && IsFolder(chosen);
    std::string folder = LibraryPath(isUsable ? chosen : "/tmp");
    if (!base::IsSeparator(folder.back())) folder.push_back('\\');
    return folder;
}

std::optional<std::string> CreateTemporaryFile(const std::string& folder, const std::string& prefix) {
    return CreateNumbered(folder, prefix, [](const char* path) {
        constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        return static_cast<bool>(FileHandle(::open(path, flags, kOwnerOnly)));
    });
}

std::optional<std::string> CreateTemporaryDirectory(const std::string& folder, const std::string& prefix) {
    return CreateNumbered(folder, prefix, [](const char* path) { return ::mkdir(path, S_IRWXU) == 0; });
}

std::optional<std::string> CurrentFolder() {
    char* const folder = ::getcwd(nullptr, 0);
    if (folder == nullptr) {
        FailWithErrno();
        return std::nullopt;
    }
    std::string path = LibraryPath(folder);
    std::free(folder);
    return path;
}

bool SetCurrentFolder(const std::string& path) {
    const auto native = NativePath(path);
    return (native && ::chdir(native->c_str()) == 0) || FailWithErrno();
}

std::optional<std::string> CommonDataFolder() {
    const auto native = NativePath(kCommonData);
    if (native && IsFolder(*native)) return kCommonData;
    errno = ENOENT;
    FailWithErrno();
    return std::nullopt;
}

std::vector<std::string> LogicalDrives() { return {std::string(kVolume) + '\\'}; }

bool IsFixedDrive(const std::string& root) { return IsVolume(root.substr(0, 2)); }

std::optional<std::string> DeviceNameOfDrive(const std::string& drive) {
    if (IsVolume(drive)) return R"(\Device\HarddiskVolume1)";
    errno = ENOENT;
    FailWithErrno();
    return std::nullopt;
}

}  // namespace quillon::platform
