#include "os/TestKitEntry.h"

#include <mutex>
#include <utility>

#include "os/AuditState.h"
#include "os/EventLogState.h"
#include "platform/ErrorText.h"

namespace quillon {

namespace {

template <class Calls>
Calls Or(std::optional<Calls>& given, Calls (*system)()) {
    return given ? *std::move(given) : system();
}

void Replace(FacilityCalls calls) {
    static std::mutex& mutex = *new std::mutex;
    static bool hadProcedures = false;
    const std::lock_guard lock(mutex);
    const bool hasProcedures = calls.procedures.has_value();
    platform::ReplaceWbemCalls(Or(calls.wbem, platform::SystemWbemCalls));
    platform::ReplaceAuditCalls(Or(calls.audit, platform::SystemAuditCalls));
    platform::ReplaceProcedureCalls(Or(calls.procedures, platform::SystemProcedureCalls));
    platform::ReplaceRegistryCalls(Or(calls.registry, platform::SystemRegistryCalls));
    platform::ReplaceCommands(std::move(calls.commands));
    if (!std::exchange(hadProcedures, hasProcedures) && !hasProcedures) return;
    EventLogState::Get().ForgetFunctions();
    AuditState::Get().ForgetFunctions();
}

}  // namespace

}  // namespace quillon

extern "C" const quillon::TestKitEntry* QuillonTestKitEntry() {
    namespace platform = quillon::platform;
    static constexpr quillon::TestKitEntry entry = {
        sizeof(quillon::FacilityCalls), quillon::kTestKitVersion, quillon::Replace,
        platform::SystemProcedureCalls, platform::LastError,      platform::SetLastErrorCode,
        platform::ErrorCodeText,
    };
    return &entry;
}
