#include <charconv>
#include <filesystem>
#include <map>
#include <set>

#include "platform/native/ProcessStat.h"
#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUnitEnding = ".service";
/// A unit in an earlier directory replaces the one in a later directory.
constexpr const char* kUnitFolders[] = {"/etc/systemd/system", "/run/systemd/system",
                                        "/usr/lib/systemd/system", "/lib/systemd/system"};
constexpr const char* kScriptFolder = "/etc/init.d";

struct Service {
    std::string name, file;
    bool isUnit = true, startsItself = false;
    std::optional<std::string> content = std::nullopt;

    /// Returns the value of the line that begins with the key, which includes the sign that ends it.
    std::optional<std::string> Value(std::string_view key) {
        if (!content) content = '\n' + ReadFact(file).value_or("");
        const auto at = content->find('\n' + std::string(key));
        if (at == std::string::npos) return std::nullopt;
        const auto first = content->find_first_not_of(" \t", at + 1 + key.size());
        const auto end = content->find('\n', at + 1);
        if (first == std::string::npos || first >= end) return std::nullopt;
        return content->substr(first, end - first);
    }
};

std::vector<fs::path> Entries(const fs::path& folder) {
    std::vector<fs::path> entries;
    for (const std::string& name : NamesWithin(folder)) entries.push_back(folder / name);
    return entries;
}

/// The names of what the system's start asks for.
std::set<std::string> EnabledUnits() {
    std::set<std::string> names;
    for (const char* folder : kUnitFolders) {
        for (const fs::path& entry : Entries(folder)) {
            if (entry.extension() != ".wants" && entry.extension() != ".requires") continue;
            for (const fs::path& unit : Entries(entry)) names.insert(unit.filename().string());
        }
    }
    return names;
}

std::set<std::string> EnabledScripts() {
    std::set<std::string> names;
    for (const char level : std::string_view("2345")) {
        for (const fs::path& link : Entries(std::string("/etc/rc") + level + ".d")) {
            const std::string name = link.filename().string();  // "S01name"
            if (name.starts_with('S') && name.size() > 3) names.insert(name.substr(3));
        }
    }
    return names;
}

void AddUnits(std::map<std::string, Service>& services) {
    const std::set<std::string> enabled = EnabledUnits();
    for (const char* folder : kUnitFolders) {
        for (const fs::path& entry : Entries(folder)) {
            const std::string file = entry.filename().string();
            const bool isTemplate = file.find("@.") != std::string::npos;
            if (!file.ends_with(kUnitEnding) || isTemplate) continue;
            const std::string name = file.substr(0, file.size() - kUnitEnding.size());
            services.try_emplace(name, Service{name, entry.string(), true, enabled.contains(file)});
        }
    }
}

void AddScripts(std::map<std::string, Service>& services) {
    const std::set<std::string> enabled = EnabledScripts();
    for (const fs::path& entry : Entries(kScriptFolder)) {
        const std::string name = entry.filename().string();
        std::error_code error;
        const auto mode = fs::status(entry, error).permissions();
        const bool canRun = !error && (mode & fs::perms::owner_exec) != fs::perms::none;
        if (canRun) services.try_emplace(name, Service{name, entry.string(), false, enabled.contains(name)});
    }
}

std::vector<Service> ListServices() {
    std::map<std::string, Service> services;
    AddUnits(services);
    AddScripts(services);
    std::vector<Service> list;
    for (auto& [name, service] : services) list.push_back(std::move(service));
    return list;
}

/// The first number of a file, when it names a process that lives.
std::optional<pid_t> LivingProcess(const std::string& file) {
    const std::string text = ReadFact(file).value_or("");
    pid_t id = 0;
    const auto error = std::from_chars(text.data(), text.data() + text.size(), id).ec;
    if (error != std::errc()) return std::nullopt;
    const auto process = platform::ReadProcessStat(id);
    return process && !process->HasEnded() ? std::optional(id) : std::nullopt;
}

std::optional<pid_t> ProcessOf(const Service& service) {
    const std::string unit = "/system.slice/" + service.name + ".service/cgroup.procs";
    for (const std::string& file :
         {"/sys/fs/cgroup" + unit, "/sys/fs/cgroup/systemd" + unit, "/run/" + service.name + ".pid",
          "/run/" + service.name + '/' + service.name + ".pid"}) {
        if (const auto id = LivingProcess(file)) return id;
    }
    return std::nullopt;
}

const char* StartModeOf(const Service& service) {
    std::error_code error;
    const auto target = fs::read_symlink(service.file, error);
    if (!error && target == "/dev/null") return "Disabled";
    return service.startsItself ? "Auto" : "Manual";
}

std::string DisplayNameOf(Service& service) {
    return service.Value(service.isUnit ? "Description=" : "# Short-Description:").value_or(service.name);
}

std::optional<std::string> CommandOf(Service& service) {
    return service.isUnit ? service.Value("ExecStart=") : std::optional(service.file);
}

}  // namespace

WmiClass ServiceClass() {
    using S = Service&;
    return MakeLiveClass<Service>(
        L"Win32_Service", {L"Name"},
        {
            {L"AcceptPause", CIM_BOOLEAN, [](S) { return false; }},
            {L"AcceptStop", CIM_BOOLEAN, [](S s) { return ProcessOf(s).has_value(); }},
            {L"Caption", CIM_STRING, [](S s) { return DisplayNameOf(s); }},
            {L"CheckPoint", CIM_UINT32},
            {L"CreationClassName", CIM_STRING, [](S) { return "Win32_Service"; }},
            {L"DelayedAutoStart", CIM_BOOLEAN, [](S) { return false; }},
            {L"Description", CIM_STRING, [](S s) { return DisplayNameOf(s); }},
            {L"DesktopInteract", CIM_BOOLEAN, [](S) { return false; }},
            {L"DisplayName", CIM_STRING, [](S s) { return DisplayNameOf(s); }},
            {L"ErrorControl", CIM_STRING},
            {L"ExitCode", CIM_UINT32},
            {L"InstallDate", CIM_DATETIME},
            {L"Name", CIM_STRING, [](S s) { return s.name; }},
            {L"PathName", CIM_STRING, [](S s) { return CommandOf(s); }},
            {L"ProcessId", CIM_UINT32, [](S s) { return ProcessOf(s).value_or(0); }},
            {L"ServiceSpecificExitCode", CIM_UINT32},
            {L"ServiceType", CIM_STRING, [](S) { return "Own Process"; }},
            {L"Started", CIM_BOOLEAN, [](S s) { return ProcessOf(s).has_value(); }},
            {L"StartMode", CIM_STRING, [](S s) { return StartModeOf(s); }},
            {L"StartName", CIM_STRING,
             [](S s) { return s.isUnit ? s.Value("User=").value_or("root") : std::string("root"); }},
            {L"State", CIM_STRING, [](S s) { return ProcessOf(s) ? "Running" : "Stopped"; }},
            {L"Status", CIM_STRING},
            {L"SystemCreationClassName", CIM_STRING, [](S) { return "Win32_ComputerSystem"; }},
            {L"SystemName", CIM_STRING, [](S) { return NodeName(); }},
            {L"TagId", CIM_UINT32},
            {L"WaitHint", CIM_UINT32},
        },
        ListServices);
}

}  // namespace quillon::simulation
