#include "simulation/Modules.h"

#include <algorithm>
#include <cstdint>

#include "base/Characters.h"
#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"

namespace quillon::simulation {

namespace {

std::string FoldedFileName(const std::string& path) {
    std::string name = path.substr(path.rfind('\\') + 1);
    std::transform(name.begin(), name.end(), name.begin(), base::Lower<char>);
    return name;
}

}  // namespace

void Modules::Set(const std::string& name, const EntryPoints& entryPoints) {
    m_modules[FoldedFileName(name)] = entryPoints;
}

void Modules::Remove(const std::string& name) { m_modules.erase(FoldedFileName(name)); }

bool Modules::Holds(HINSTANCE module) const {
    return std::any_of(m_modules.begin(), m_modules.end(), [module](const auto& own) {
        return reinterpret_cast<const void*>(&own.second) == reinterpret_cast<const void*>(module);
    });
}

void Modules::RemoveEntryPoint(const std::string& module, const std::string& entryPoint) {
    m_modules.at(FoldedFileName(module)).erase(entryPoint);
}

platform::ProcedureCalls Modules::Calls() {
    platform::ProcedureCalls calls;
    calls.isSystemAtLeast = [](std::uint32_t, std::uint32_t, std::uint32_t) { return true; };
    calls.loadedModule = calls.loadModule = [this](const std::string& name) { return Find(name); };
    calls.systemDirectory = [] { return std::optional<std::string>("C:\\Windows\\System32"); };
    calls.findProcedure = FindIn;
    return calls;
}

HINSTANCE Modules::Find(const std::string& name) {
    const auto found = m_modules.find(FoldedFileName(name));
    if (found != m_modules.end()) return reinterpret_cast<HINSTANCE>(&found->second);
    platform::SetLastErrorCode(base::kModuleNotFound);
    return nullptr;
}

platform::Procedure Modules::FindIn(HINSTANCE module, const std::string& entryPoint) {
    const auto& entryPoints = *reinterpret_cast<const EntryPoints*>(module);
    const auto found = entryPoints.find(entryPoint);
    if (found != entryPoints.end()) return found->second;
    platform::SetLastErrorCode(base::kProcedureNotFound);
    return nullptr;
}

}  // namespace quillon::simulation
