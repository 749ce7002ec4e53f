#include "testkit/Facilities.h"

#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "quillon/EventLogProxy.h"
#include "quillon/LoggerBase.h"
#include "simulation/Modules.h"

namespace quillon::testkit {

namespace {

constexpr const char* kEventLogModule = "wevtapi.dll";

struct Facilities {
    std::mutex mutex;
    FacilityCalls calls;
    simulation::Modules modules;
    std::set<std::string> moduleNames;

    static Facilities& Get() {
        static Facilities& facilities = *new Facilities;
        return facilities;
    }
};

class SilentLogger final : public LoggerBase {
public:
    SilentLogger() : LoggerBase(Level::Fatal) {}

private:
    QUILLON_PRINTF(3, 0) void Write(Level, const char*, std::va_list) override {}
};

/// The simulated modules first, then those of the system.
platform::ProcedureCalls CallsOf(simulation::Modules& modules) {
    const platform::ProcedureCalls own = modules.Calls(), system = Library().systemProcedures();
    const auto isOwn = [&modules](HINSTANCE module) { return modules.Holds(module); };
    platform::ProcedureCalls calls = own;
    calls.loadedModule = [own, system](const std::string& name) {
        const HINSTANCE module = own.loadedModule(name);
        return module != nullptr ? module : system.loadedModule(name);
    };
    calls.loadModule = [own, system](const std::string& path) {
        const HINSTANCE module = own.loadModule(path);
        return module != nullptr ? module : system.loadModule(path);
    };
    calls.findProcedure = [own, system, isOwn](HINSTANCE module, const char* name) {
        return isOwn(module) ? own.findProcedure(module, name) : system.findProcedure(module, name);
    };
    return calls;
}

void PutInPlace(Facilities& facilities) {
    facilities.calls.procedures.reset();
    if (!facilities.moduleNames.empty()) facilities.calls.procedures = CallsOf(facilities.modules);
    Library().replace(facilities.calls);
    SilentLogger silent;
    if (facilities.moduleNames.contains(kEventLogModule)) EventLogProxy::Initialize(silent);
}

}  // namespace

const TestKitEntry& Library() {
    static const TestKitEntry& entry = *QuillonTestKitEntry();
    if (entry.size != sizeof(FacilityCalls) || std::string_view(entry.version) != kTestKitVersion)
        throw std::logic_error("The test kit and the library are of different versions");
    return entry;
}

void ChangeFacilities(const std::function<void(FacilityCalls&)>& change) {
    Facilities& facilities = Facilities::Get();
    const std::lock_guard lock(facilities.mutex);
    change(facilities.calls);
    PutInPlace(facilities);
}

void AddSimulatedModule(const std::string& name,
                        const std::map<std::string, platform::Procedure>& functions) {
    Facilities& facilities = Facilities::Get();
    const std::lock_guard lock(facilities.mutex);
    facilities.modules.Set(name, functions);
    facilities.moduleNames.insert(name);
    PutInPlace(facilities);
}

void RemoveSimulatedModule(const std::string& name) {
    Facilities& facilities = Facilities::Get();
    const std::lock_guard lock(facilities.mutex);
    facilities.modules.Remove(name);
    facilities.moduleNames.erase(name);
    PutInPlace(facilities);
}

}  // namespace quillon::testkit
