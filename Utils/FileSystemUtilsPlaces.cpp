#include <algorithm>
#include <string_view>

#include "platform/Characters.h"
#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"

namespace quillon {

namespace {

template <class Text>
bool StartsWithNoCase(const Text& text, const Text& start) {
    using View = std::basic_string_view<typename Text::value_type>;
    return text.size() >= start.size() &&
           platform::EqualIgnoringCase(View(text).substr(0, start.size()), View(start));
}

bool LiesOnDevice(const std::string& ntPath, const std::string& device) {
    return StartsWithNoCase(ntPath, device) && ntPath.size() > device.size() && ntPath[device.size()] == '\\';
}

}  // namespace

const std::string& FileSystemUtils::GetSystemTempPath() {
    static const std::string path = platform::TemporaryFolder().value_or("");
    return path;
}

std::string FileSystemUtils::GetWorkingDirectory() { return platform::CurrentFolder().value_or(""); }

bool FileSystemUtils::SetWorkingDirectory(const std::string& path) {
    return platform::SetCurrentFolder(path);
}

void FileSystemUtils::DeviceNameToVolumeNameFormat(std::wstring& path) {
    static const std::wstring prefix = L"\\Device\\";
    if (StartsWithNoCase(path, prefix)) path.replace(0, prefix.size(), L"\\\\?\\");
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
