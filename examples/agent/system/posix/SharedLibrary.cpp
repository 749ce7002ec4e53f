#include "system/SharedLibrary.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "quillon/PathUtils.h"
#include "system/PrivateFile.h"

namespace quillon::agent {

namespace {

/// Returns the path without links, or the empty text with the reason in errno.
std::string RealPath(const std::string& path) {
    char buffer[PATH_MAX];
    return ::realpath(path.c_str(), buffer) == nullptr ? "" : buffer;
}

bool IsTrusted(uid_t owner) { return owner == 0 || owner == ::geteuid(); }

/// In a sticky directory others may make files, but not rename or remove ours. A POSIX access list shows its
/// widest grant in the bits of the group.
bool IsOpenToOthers(const struct stat& status, bool isAbove) {
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) == 0) return false;
    return !(isAbove && (status.st_mode & S_ISVTX) != 0);
}

std::string CheckOne(const std::string& path, bool isAbove) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return path + ": " + SystemErrorText(errno);
    if (!IsTrusted(status.st_uid)) return path + " belongs to the account " + std::to_string(status.st_uid);
    return IsOpenToOthers(status, isAbove) ? path + " may be written by other accounts" : "";
}

}  // namespace

const char* const kSharedLibraryEnd = ".so";

void* LoadFunction(const std::string& path, const char* name, std::string& fault) {
    void* const library =
        ::dlopen(RealPath(PathUtils::ToSystemPath(path)).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const function = library == nullptr ? nullptr : ::dlsym(library, name);
    if (function == nullptr) fault = ::dlerror();
    return function;
}

std::string FindForeignWriter(const std::string& path) {
    const std::string real = RealPath(PathUtils::ToSystemPath(path));
    if (real.empty()) return path + ": " + SystemErrorText(errno);
    std::string fault = CheckOne(real, false);
    for (std::size_t end = real.rfind('/'); fault.empty() && end != std::string::npos && end != 0;
         end = real.rfind('/', end - 1))
        fault = CheckOne(real.substr(0, end), true);
    return fault.empty() ? CheckOne("/", true) : fault;
}

}  // namespace quillon::agent
