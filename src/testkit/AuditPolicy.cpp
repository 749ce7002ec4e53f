#include "quillon/testkit/AuditPolicy.h"

#include "simulation/audit/AuditPolicy.h"
#include "testkit/Facilities.h"

namespace quillon::testkit {

namespace {

constexpr const char* kModule = "advapi32.dll";

simulation::AuditPolicy& Simulated() { return simulation::AuditPolicy::Machine(); }

}  // namespace

AuditPolicy::AuditPolicy() {
    Simulated().Reset();
    ChangeFacilities([](FacilityCalls& calls) { calls.audit = Simulated().Calls(); });
    AddSimulatedModule(kModule, simulation::AuditPolicy::Exports());
}

AuditPolicy::~AuditPolicy() {
    AwaitQuiet();
    ChangeFacilities([](FacilityCalls& calls) { calls.audit.reset(); });
    RemoveSimulatedModule(kModule);
}

void AuditPolicy::Set(const UniqueIdentifier& subcategory, bool success, bool failure) {
    Simulated().SetState(subcategory.ToMsGuid(),
                         (success ? platform::kAuditSuccess : 0) | (failure ? platform::kAuditFailure : 0));
}

bool AuditPolicy::IsAudited(const UniqueIdentifier& subcategory) const {
    return (Simulated().State(subcategory.ToMsGuid()) & platform::kAuditBoth) == platform::kAuditBoth;
}

void AuditPolicy::FailNext(const std::string& call, std::uint32_t code) { Simulated().FailNext(call, code); }

void AuditPolicy::AwaitQuiet() { Simulated().GetWaits().AwaitQuiet(); }

std::size_t AuditPolicy::CountLeftOver() const { return Simulated().CountLeftOver(); }

}  // namespace quillon::testkit
