#include "quillon/testkit/Registry.h"

#include "simulation/registry/Registry.h"
#include "testkit/Facilities.h"

namespace quillon::testkit {

namespace {

/// The one of the kit, in place of the other while there is a Registry. Its calls live as long as the
/// process.
simulation::Registry& Simulated() {
    static simulation::Registry& registry = *new simulation::Registry;
    return registry;
}

}  // namespace

Registry::Registry() {
    Simulated().Reset();
    ChangeFacilities([](FacilityCalls& calls) { calls.registry = Simulated().Calls(); });
}

Registry::~Registry() {
    ChangeFacilities([](FacilityCalls& calls) { calls.registry.reset(); });
    Simulated().Reset();
}

void Registry::SetNumber(const std::string& path, const std::string& name, std::uint32_t number) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift));
    SetBytes(path, name, bytes);
}

void Registry::SetText(const std::string& path, const std::string& name, const std::string& text) {
    SetBytes(path, name, text + '\0');
}

void Registry::SetBytes(const std::string& path, const std::string& name, std::string_view bytes) {
    Simulated().SetValue(path, name, std::string(bytes));
}

void Registry::RemoveValue(const std::string& path, const std::string& name) {
    Simulated().RemoveValue(path, name);
}

void Registry::RemoveKey(const std::string& path) { Simulated().RemoveKey(path); }

void Registry::FailNext(std::uint32_t code) { Simulated().FailNext(code); }

RegKey Registry::Open(const std::string& path) { return {path, Simulated().Open(path)}; }

}  // namespace quillon::testkit
