#pragma once

#include <map>
#include <string>

#include "platform/ProcedureApi.h"

namespace quillon::simulation {

/// Holds the functions of a module by the names under which it exports them.
using EntryPoints = std::map<std::string, platform::Procedure>;

/// Modules in memory, by their file's name, whose ASCII case does not matter. Set up
/// before it is used; it lives as long as its calls.
class Modules {
public:
    void Set(const std::string& name, const EntryPoints& entryPoints);
    void Remove(const std::string& name);
    /// Whether a module is one of these, and not another one of the process.
    bool Holds(HINSTANCE module) const;
    void RemoveEntryPoint(const std::string& module, const std::string& entryPoint);

    /// Every module counts as loaded; the system has every version.
    platform::ProcedureCalls Calls();

private:
    HINSTANCE Find(const std::string& name);
    static platform::Procedure FindIn(HINSTANCE module, const std::string& entryPoint);

    std::map<std::string, EntryPoints> m_modules;
};

}  // namespace quillon::simulation
