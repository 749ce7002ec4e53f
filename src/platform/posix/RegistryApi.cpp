#include "platform/RegistryApi.h"

#include <array>
#include <string_view>

#include "platform/posix/KernelRelease.h"
#include "platform/posix/OsRelease.h"
#include "platform/simulated/Registry.h"

namespace quillon::platform {

namespace {

using simulated::LocalMachine;

std::string NumberBytes(std::uint32_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift));
    return bytes;
}

/// With the zero that a stored text ends with.
std::string TextBytes(std::string text) { return text.append(1, '\0'); }

}  // namespace

void simulated::Seed(Registry& registry) {
    constexpr const char* kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const auto release = KernelRelease();
    registry.SetValue(kCurrentVersion, "CurrentMajorVersionNumber", NumberBytes(release[0]));
    registry.SetValue(kCurrentVersion, "CurrentMinorVersionNumber", NumberBytes(release[1]));
    registry.SetValue(kCurrentVersion, "CurrentBuildNumber", TextBytes(std::to_string(release[2])));
    registry.SetValue(kCurrentVersion, "UBR", NumberBytes(release[3]));
    registry.SetValue(kCurrentVersion, "ProductName", TextBytes(OsReleaseValue("NAME").value_or("Linux")));
}

void RegistryTraits::Close(Type value) noexcept { LocalMachine().Close(value); }

RegistryKey OpenMachineKey(const std::string& path) { return RegistryKey(LocalMachine().Open(path)); }

std::uint32_t QueryValue(HKEY key, const char* name, void* buffer, std::uint32_t& size) {
    return LocalMachine().Query(key, name == nullptr ? "" : name, buffer, size);
}

}  // namespace quillon::platform
