#include "platform/AuditApi.h"

#include <utility>

#include "platform/ErrorText.h"
#include "platform/Replaceable.h"
#include "quillon/DestructorFunctor.h"

namespace quillon::platform {

namespace {

Replaceable<AuditCalls>& Current() {
    static auto& calls = *new Replaceable<AuditCalls>(SystemAuditCalls());
    return calls;
}

void Release(const std::function<void(HANDLE)>& release, HANDLE value) noexcept {
    const DestructorFunctor restore([code = LastError()] { SetLastErrorCode(code); });
    release(value);
}

}  // namespace

const AuditCalls& Audit() { return Current().Get(); }

void ReplaceAuditCalls(AuditCalls calls) { Current().Replace(std::move(calls)); }

void AuditTokenTraits::Close(Type value) noexcept { Release(Audit().close, value); }

void AuditEventTraits::Close(Type value) noexcept { Release(Audit().close, value); }

void AuditWaitTraits::Close(Type value) noexcept { Release(Audit().unregisterWait, value); }

}  // namespace quillon::platform
