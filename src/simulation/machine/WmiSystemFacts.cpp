#include <sys/utsname.h>
#include <unistd.h>

#include <array>

#include "platform/ProcessFactsApi.h"
#include "platform/TimeApi.h"
#include "platform/native/KernelRelease.h"
#include "platform/native/OsRelease.h"
#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

constexpr int kLinux = 36;  // of CIM_OperatingSystem.OSType

/// The one that there is.
struct Machine {
    std::array<std::uint32_t, 4> release = platform::KernelRelease();
};

std::vector<Machine> TheMachine() { return std::vector<Machine>(1); }

std::string Distribution() { return platform::OsReleaseValue("PRETTY_NAME").value_or("Linux"); }

std::optional<std::size_t> ProcessCount() {
    const auto ids = platform::ListProcessIds();
    return ids ? std::optional(ids->size()) : std::nullopt;
}

std::optional<long long> FreeVirtualMemory() {
    const auto memory = MemoryKilobytes("MemAvailable:");
    const auto swap = MemoryKilobytes("SwapFree:");
    return memory && swap ? std::optional(*memory + *swap) : std::nullopt;
}

std::optional<long long> TotalVirtualMemory() {
    const auto memory = MemoryKilobytes("MemTotal:");
    const auto swap = MemoryKilobytes("SwapTotal:");
    return memory && swap ? std::optional(*memory + *swap) : std::nullopt;
}

std::optional<long long> PhysicalBytes() {
    const auto kilobytes = MemoryKilobytes("MemTotal:");
    return kilobytes ? std::optional(*kilobytes * 1024) : std::nullopt;
}

std::string Hardware() {
    utsname names{};
    return ::uname(&names) == 0 ? names.machine : std::string();
}

std::string SystemType() { return Hardware() == "x86_64" ? "x64-based PC" : Hardware() + "-based PC"; }

WmiFact FirmwareFact(const char* name) { return ReadFact(std::string("/sys/class/dmi/id/") + name); }

std::optional<bool> HasHypervisor() {
    const auto processors = ReadFact("/proc/cpuinfo");
    if (!processors || Hardware() != "x86_64") return std::nullopt;
    return processors->find(" hypervisor") != std::string::npos;
}

std::optional<bool> DaylightInEffect() {
    const auto now = platform::LocalFields(CurrentTime() / 1'000'000);
    return now && now->tm_isdst >= 0 ? std::optional(now->tm_isdst > 0) : std::nullopt;
}

/// Packages; nothing where the system does not number them.
std::optional<std::size_t> PackageCount() {
    constexpr std::string_view kLabel = "physical id\t:";
    const std::string text = ReadFact("/proc/cpuinfo").value_or("");
    std::vector<std::string> packages;
    for (auto at = text.find(kLabel); at != std::string::npos; at = text.find(kLabel, at + 1)) {
        packages.push_back(text.substr(at, text.find('\n', at) - at));
    }
    std::sort(packages.begin(), packages.end());
    const auto end = std::unique(packages.begin(), packages.end());
    if (packages.empty()) return std::nullopt;
    return static_cast<std::size_t>(end - packages.begin());
}

}  // namespace

WmiClass OperatingSystemClass() {
    using M = Machine&;
    return MakeLiveClass<Machine>(
        L"Win32_OperatingSystem", {},
        {
            {L"BootDevice", CIM_STRING},
            {L"BuildNumber", CIM_STRING, [](M m) { return std::to_string(m.release[2]); }},
            {L"BuildType", CIM_STRING},
            {L"Caption", CIM_STRING, [](M) { return Distribution(); }},
            {L"CodeSet", CIM_STRING, [](M) { return "1252"; }},
            {L"CountryCode", CIM_STRING},
            {L"CreationClassName", CIM_STRING, [](M) { return "Win32_OperatingSystem"; }},
            {L"CSCreationClassName", CIM_STRING, [](M) { return "Win32_ComputerSystem"; }},
            {L"CSDVersion", CIM_STRING},
            {L"CSName", CIM_STRING, [](M) { return NodeName(); }},
            {L"CurrentTimeZone", CIM_SINT16, [](M) { return platform::ZoneOffsetNow(); }},
            {L"Description", CIM_STRING},
            {L"FreePhysicalMemory", CIM_UINT64, [](M) { return MemoryKilobytes("MemAvailable:"); }},
            {L"FreeSpaceInPagingFiles", CIM_UINT64, [](M) { return MemoryKilobytes("SwapFree:"); }},
            {L"FreeVirtualMemory", CIM_UINT64, [](M) { return FreeVirtualMemory(); }},
            {L"InstallDate", CIM_DATETIME},
            {L"LastBootUpTime", CIM_DATETIME, [](M) { return BootTime(); }},
            {L"LocalDateTime", CIM_DATETIME, [](M) { return CurrentTime(); }},
            {L"Locale", CIM_STRING},
            {L"Manufacturer", CIM_STRING, [](M) { return platform::OsReleaseValue("NAME"); }},
            {L"MaxNumberOfProcesses", CIM_UINT32,
             [](M) {
                 const auto most = ReadFact("/proc/sys/kernel/pid_max");
                 return most ? WmiFact(*most) : WmiFact();
             }},
            {L"Name", CIM_STRING, [](M) { return Distribution(); }},
            {L"NumberOfProcesses", CIM_UINT32, [](M) { return ProcessCount(); }},
            {L"NumberOfUsers", CIM_UINT32},
            {L"OperatingSystemSKU", CIM_UINT32},
            {L"Organization", CIM_STRING},
            {L"OSArchitecture", CIM_STRING, [](M) { return sizeof(void*) == 8 ? "64-bit" : "32-bit"; }},
            {L"OSLanguage", CIM_UINT32},
            {L"OSType", CIM_UINT16, [](M) { return kLinux; }},
            {L"Primary", CIM_BOOLEAN, [](M) { return true; }},
            {L"ProductType", CIM_UINT32},
            {L"RegisteredUser", CIM_STRING},
            {L"SerialNumber", CIM_STRING},
            {L"ServicePackMajorVersion", CIM_UINT16, [](M) { return 0; }},
            {L"ServicePackMinorVersion", CIM_UINT16, [](M) { return 0; }},
            {L"SizeStoredInPagingFiles", CIM_UINT64, [](M) { return MemoryKilobytes("SwapTotal:"); }},
            {L"Status", CIM_STRING, [](M) { return "OK"; }},
            {L"SystemDirectory", CIM_STRING},
            {L"SystemDrive", CIM_STRING, [](M) { return "C:"; }},
            {L"TotalVirtualMemorySize", CIM_UINT64, [](M) { return TotalVirtualMemory(); }},
            {L"TotalVisibleMemorySize", CIM_UINT64, [](M) { return MemoryKilobytes("MemTotal:"); }},
            {L"Version", CIM_STRING,
             [](M m) {
                 const auto& r = m.release;
                 return std::to_string(r[0]) + '.' + std::to_string(r[1]) + '.' + std::to_string(r[2]);
             }},
            {L"WindowsDirectory", CIM_STRING},
        },
        TheMachine);
}

WmiClass ComputerSystemClass() {
    using M = Machine&;
    return MakeLiveClass<Machine>(
        L"Win32_ComputerSystem", {L"Name"},
        {
            {L"BootupState", CIM_STRING},
            {L"Caption", CIM_STRING, [](M) { return NodeName(); }},
            {L"CreationClassName", CIM_STRING, [](M) { return "Win32_ComputerSystem"; }},
            {L"CurrentTimeZone", CIM_SINT16, [](M) { return platform::ZoneOffsetNow(); }},
            {L"DaylightInEffect", CIM_BOOLEAN, [](M) { return DaylightInEffect(); }},
            {L"Description", CIM_STRING},
            {L"DNSHostName", CIM_STRING, [](M) { return NodeName(); }},
            {L"Domain", CIM_STRING},
            {L"DomainRole", CIM_UINT16},
            {L"HypervisorPresent", CIM_BOOLEAN, [](M) { return HasHypervisor(); }},
            {L"Manufacturer", CIM_STRING, [](M) { return FirmwareFact("sys_vendor"); }},
            {L"Model", CIM_STRING, [](M) { return FirmwareFact("product_name"); }},
            {L"Name", CIM_STRING, [](M) { return NodeName(); }},
            {L"NumberOfLogicalProcessors", CIM_UINT32, [](M) { return ::sysconf(_SC_NPROCESSORS_ONLN); }},
            {L"NumberOfProcessors", CIM_UINT32, [](M) { return PackageCount(); }},
            {L"PartOfDomain", CIM_BOOLEAN},
            {L"PCSystemType", CIM_UINT16},
            {L"PrimaryOwnerName", CIM_STRING},
            {L"Status", CIM_STRING, [](M) { return "OK"; }},
            {L"SystemFamily", CIM_STRING, [](M) { return FirmwareFact("product_family"); }},
            {L"SystemSKUNumber", CIM_STRING, [](M) { return FirmwareFact("product_sku"); }},
            {L"SystemType", CIM_STRING, [](M) { return SystemType(); }},
            {L"TotalPhysicalMemory", CIM_UINT64, [](M) { return PhysicalBytes(); }},
            {L"UserName", CIM_STRING},
            {L"Workgroup", CIM_STRING},
        },
        TheMachine);
}

}  // namespace quillon::simulation
