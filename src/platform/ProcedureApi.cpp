#include "platform/ProcedureApi.h"

#include <utility>

#include "platform/Replaceable.h"

namespace quillon::platform {

namespace {

Replaceable<ProcedureCalls>& Current() {
    static auto& calls = *new Replaceable<ProcedureCalls>(SystemProcedureCalls());
    return calls;
}

}  // namespace

const ProcedureCalls& Procedures() { return Current().Get(); }

void ReplaceProcedureCalls(ProcedureCalls calls) { Current().Replace(std::move(calls)); }

}  // namespace quillon::platform
