#pragma once

#include <quillon/ModuleEntry.h>

#include <stdexcept>
#include <string>

/// Loads a module's library from an absolute path, for the rest of the process's life, and returns its entry.
/// Throws std::runtime_error when it cannot be loaded, has no entry, or was built for another interface.
const quillon::ModuleEntry& LoadEntry(const std::string& path);

/// Checks what the system found; null is a failure, which `reason` tells.
inline const quillon::ModuleEntry& CheckedEntry(quillon::ModuleEntryFunction function,
                                                const std::string& reason) {
    if (function == nullptr) throw std::runtime_error(reason);
    const quillon::ModuleEntry* const entry = function();
    if (entry == nullptr || entry->interfaceVersion != quillon::kModuleInterfaceVersion)
        throw std::runtime_error("The module is of another version of the interface");
    return *entry;
}
