#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "quillon/WindowsTypes.h"

namespace quillon::platform {

/// A function of the system that is bound by name; cast it to its type.
using Procedure = void (*)();

/// How functions are found that not every system has. Outside Windows the simulated
/// audit policy and event log stand behind these calls. A failure's reason is the last error.
struct ProcedureCalls {
    /// Whether the system is of that version or a later one.
    std::function<bool(std::uint32_t major, std::uint32_t minor, std::uint32_t servicePack)> isSystemAtLeast;
    /// A module that the process has loaded already, by its file's name; null when there is none.
    std::function<HINSTANCE(const std::string& name)> loadedModule;
    /// The system's own directory, a library path; nothing when it is longer than 260 characters.
    std::function<std::optional<std::string>()> systemDirectory;
    /// Loads a module, for the rest of the process's life; null on failure.
    std::function<HINSTANCE(const std::string& path)> loadModule;
    /// Returns the entry point; null when the module has none of that name.
    std::function<Procedure(HINSTANCE module, const char* name)> findProcedure;
};

/// The calls in force. Thread-safe.
const ProcedureCalls& Procedures();
ProcedureCalls SystemProcedureCalls();
/// Replaces the calls; for tests. Who has bound a function keeps it.
void ReplaceProcedureCalls(ProcedureCalls calls);

}  // namespace quillon::platform
