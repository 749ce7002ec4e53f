#include "platform/native/NativePath.h"

#include <algorithm>

#include "base/PathText.h"

namespace quillon::platform {

namespace {

constexpr std::string_view kNowhere = "/nonexistent/";
constexpr std::string_view kVolumeName = "HarddiskVolume1\\";

std::string& VolumeRoot() {
    // Never destroyed: threads may open files while the process ends.
    static std::string& root = *new std::string;
    return root;
}

std::string WithSlashes(std::string_view path) {
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

std::string BelowRoot(std::string_view rest) { return VolumeRoot() + WithSlashes(rest); }

std::string Nowhere(std::string_view rest) { return std::string(kNowhere) + WithSlashes(rest); }

std::string OnDrive(std::string_view path) {
    if (path[0] != 'C' && path[0] != 'c') return Nowhere(path);
    const std::string_view rest = path.substr(2);
    if (rest.empty()) return BelowRoot("/");
    return base::IsSeparator(rest[0]) ? BelowRoot(rest) : WithSlashes(rest);  // "C:x": in the current folder
}

}  // namespace

std::string NativePath(const std::string& path) {
    std::string_view rest = path;
    if (rest.starts_with(R"(\\?\)")) {
        rest.remove_prefix(4);
        if (rest.starts_with(kVolumeName)) return BelowRoot(rest.substr(kVolumeName.size() - 1));
        return base::StartsWithDrive(rest) ? OnDrive(rest) : Nowhere(rest);
    }
    if (rest.starts_with(R"(\\)")) return Nowhere(rest);  // another machine's, or a device
    if (base::StartsWithDrive(rest)) return OnDrive(rest);
    return rest.starts_with('\\') ? BelowRoot(rest) : WithSlashes(rest);
}

std::string NativeName(const std::string& path) {
    std::string native = NativePath(path);
    while (native.size() > 1 && native.back() == '/') native.pop_back();
    return native;
}

std::string LibraryPath(std::string_view nativePath) {
    std::string result;
    if (nativePath.starts_with('/')) {
        const std::string& root = VolumeRoot();
        if (!nativePath.starts_with(root)) return std::string(nativePath);
        nativePath.remove_prefix(root.size());
        if (nativePath.empty()) return "C:\\";
        if (nativePath[0] != '/') return root + std::string(nativePath);
        result = "C:";
    }
    result += nativePath;
    std::replace(result.begin(), result.end(), '/', '\\');
    return result;
}

void SetVolumeRoot(const std::string& nativeFolder) { VolumeRoot() = nativeFolder; }

}  // namespace quillon::platform
