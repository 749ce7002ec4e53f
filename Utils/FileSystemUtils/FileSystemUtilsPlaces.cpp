#include <algorithm>
#include <string_view>

#include "base/Characters.h"
#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

template <class View>
bool StartsWithNoCase(View text, View start) {
    return text.size() >= start.size() && base::EqualIgnoringCase(text.substr(0, start.size()), start);
}

bool LiesOnDevice(std::string_view ntPath, std::string_view device) {
    return StartsWithNoCase(ntPath, device) && ntPath.size() > device.size() && ntPath[device.size()] == '\\';
}

}  // namespace

const std::string& FileSystemUtils::GetSystemTempPath() {
    // Never destroyed: threads may ask while the process ends.
    static const std::string& path = *new std::string(platform::TemporaryFolder().value_or(""));
    return path;
}

std::string FileSystemUtils::GetWorkingDirectory() { return platform::CurrentFolder().value_or(""); }

bool FileSystemUtils::SetWorkingDirectory(const std::string& path) {
    return platform::SetCurrentFolder(path);
}

void FileSystemUtils::DeviceNameToVolumeNameFormat(std::wstring& path) {
    static constexpr std::wstring_view prefix = L"\\Device\\";
    if (StartsWithNoCase(std::wstring_view(path), prefix)) path.replace(0, prefix.size(), L"\\\\?\\");
}

std::string FileSystemUtils::TranslateNtPathToWin32Path(const std::string& ntPath) {
    if (ntPath.empty()) return ntPath;
    for (const std::string& root : platform::LogicalDrives()) {
        const std::string drive = root.substr(0, 2);
        const auto device = platform::DeviceNameOfDrive(drive);
        if (device && LiesOnDevice(ntPath, *device)) return drive + ntPath.substr(device->size());
    }
    return ntPath;
}

}  // namespace quillon
