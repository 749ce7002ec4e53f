#pragma once

#include <cstdint>
#include <memory>

#include "quillon/Export.h"
#include "quillon/Module.h"

namespace quillon {

/// Counts the changes of what a host and a module in a library of its own share: the tables of virtual
/// functions, the structures that both fill, and the entry below. A host loads modules of its own
/// version only; a module of another one has to be built anew with the host's headers.
inline constexpr std::uint32_t kModuleInterfaceVersion = 1;

/// Says what a module library holds. It is constant, and of the same layout in every version of the
/// interface up to `name`.
struct ModuleEntry {
    std::uint32_t
        interfaceVersion;       ///< kModuleInterfaceVersion of the headers that the module was built with
    const char* name;           ///< for people, UTF-8
    const char* version;        ///< the module's own, for people, UTF-8
    IModule* (*create)();       ///< makes the module, once the host's services are registered; may throw
    void (*destroy)(IModule*);  ///< deletes what `create` returned, before the host's services go
};

/// Is the type of the one function that a module library exports.
using ModuleEntryFunction = const ModuleEntry* (*)();

/// Is the name of that function, which QUILLON_MODULE defines.
inline constexpr const char* kModuleEntryName = "QuillonModuleEntry";

}  // namespace quillon

/// Defines the entry of a module library, once in it and outside every namespace. `make` is a function
/// that returns a std::unique_ptr<quillon::IModule>; the texts are literals.
///
/// @code
/// std::unique_ptr<quillon::IModule> MakeSampleModule();
///
/// QUILLON_MODULE("Sample", "1.0", MakeSampleModule)
/// @endcode
#define QUILLON_MODULE(name, version, make)                                                                  \
    extern "C" QUILLON_MODULE_EXPORT const ::quillon::ModuleEntry* QuillonModuleEntry() {                    \
        static constexpr ::quillon::ModuleEntry entry = {                                                    \
            ::quillon::kModuleInterfaceVersion, name, version,                                               \
            []() -> ::quillon::IModule* { return ::std::unique_ptr<::quillon::IModule>(make()).release(); }, \
            [](::quillon::IModule* module) { delete module; }};                                              \
        return &entry;                                                                                       \
    }
