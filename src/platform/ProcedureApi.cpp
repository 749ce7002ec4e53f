#include "platform/ProcedureApi.h"

#include <utility>

namespace quillon::platform {

namespace {

ProcedureCalls& Current() {
    static ProcedureCalls& calls = *new ProcedureCalls(SystemProcedureCalls());
    return calls;
}

}  // namespace

const ProcedureCalls& Procedures() { return Current(); }

void ReplaceProcedureCalls(ProcedureCalls calls) { Current() = std::move(calls); }

}  // namespace quillon::platform
