#include "simulation/machine/MachineRegistry.h"

#include <cstdint>
#include <string>

#include "platform/native/KernelRelease.h"
#include "platform/native/OsRelease.h"

namespace quillon::simulation {

namespace {

std::string NumberBytes(std::uint32_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift));
    return bytes;
}

/// Returns the bytes of a stored text, which end with a NUL.
std::string TextBytes(std::string text) { return text.append(1, '\0'); }

}  // namespace

void AddMachineFacts(Registry& registry) {
    constexpr const char* kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const auto release = platform::KernelRelease();
    registry.SetValue(kCurrentVersion, "CurrentMajorVersionNumber", NumberBytes(release[0]));
    registry.SetValue(kCurrentVersion, "CurrentMinorVersionNumber", NumberBytes(release[1]));
    registry.SetValue(kCurrentVersion, "CurrentBuildNumber", TextBytes(std::to_string(release[2])));
    registry.SetValue(kCurrentVersion, "UBR", NumberBytes(release[3]));
    registry.SetValue(kCurrentVersion, "ProductName",
                      TextBytes(platform::OsReleaseValue("NAME").value_or("Linux")));
}

Registry& LocalMachine() {
    static Registry& hive = []() -> Registry& {
        auto* const made = new Registry;
        AddMachineFacts(*made);
        return *made;
    }();
    return hive;
}

}  // namespace quillon::simulation
