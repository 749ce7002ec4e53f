#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/AuditApi.h"
#include "platform/ProcedureApi.h"
#include "platform/RegistryApi.h"
#include "platform/ScriptedProcess.h"
#include "platform/Wbem.h"
#include "quillon/Export.h"

namespace quillon {

/// Holds what stands in place of the system's facilities; what has no value is the system's own.
struct FacilityCalls {
    std::optional<platform::WbemCalls> wbem;
    std::optional<platform::AuditCalls> audit;
    std::optional<platform::ProcedureCalls> procedures;
    std::optional<platform::RegistryCalls> registry;
    platform::CommandScripts commands;
};

/// Is what the test kit, a static library of a test program, needs of the shared library behind its
/// exported interface. Nothing else may use it. Every function is thread-safe.
struct TestKitEntry {
    /// Of the library; the kit's own must be the same, as both share the types above.
    std::size_t size;
    const char* version;

    /// Puts all calls in place. With `procedures`, and after them, the functions of the event log and of the
    /// audit policy are looked for anew when they are needed next; nothing may be held then.
    void (*replace)(FacilityCalls calls);
    platform::ProcedureCalls (*systemProcedures)();
    std::uint32_t (*lastError)();
    void (*setLastError)(std::uint32_t code);
    std::optional<std::string> (*errorText)(std::int32_t code);
};

/// Is the version of both sides.
inline constexpr const char* kTestKitVersion = "1";

}  // namespace quillon

extern "C" QUILLON_API const quillon::TestKitEntry* QuillonTestKitEntry();
