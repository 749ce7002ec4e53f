#include "modules/Modules.h"

#include "modules/AuditRecordFile.h"
#include "modules/Describe.h"
#include "modules/Waiting.h"
#include "quillon/AuditHolder.h"
#include "quillon/DescribedBinder.h"
#include "quillon/MethodParameterValidation.h"
#include "quillon/ServiceLocator.h"
#include "sql/DatabaseFolder.h"

namespace quillon::agent {

namespace {

constexpr long long kDefaultSeconds = 10;

void Hold(DescribedBinder& binder, InvocationResult& result) {
    std::string text;
    long long seconds = 0;
    binder.Add("subcategory", text);
    binder.Add("seconds", seconds);
    if (!binder.Bind(result) ||
        !MethodParameterValidation::InRange("seconds", seconds, 0, kLongestWait, result))
        return;
    bool isIdentifier = false;
    const auto subcategory = UniqueIdentifier::Parse(text, &isIdentifier);
    if (!isIdentifier) {
        RefuseParameter("'subcategory' parameter must be a GUID", result);
        return;
    }
    const DatabaseFolder& folder = *ServiceLocator::Get<DatabaseFolder>();
    if (folder.Make()) KeepAuditRecord(folder);
    const AuditHolder holder(subcategory);
    if (!holder) {
        Fail(InvocationResult::kSystemFailure,
             "Sub-category " + subcategory.ToString() + " cannot be audited; the log says why", result);
        return;
    }
    WaitSeconds(seconds);
    result.resultTable.AddRow(
        VariantList(Variant("Subcategory", subcategory.ToString()), Variant("Seconds", seconds)));
}

void DescribeHold(IMethodMetadataBuilder& builder) {
    builder.Description("Keeps success and failure auditing of a sub-category switched on for a while.")
        .Flags({IMethodMetadata::MayModifySystemState})
        .Note("Outside Windows the audit policy is simulated, and lives only as long as the agent.")
        .Note(
            "Auditing that was on before stays on. What an agent that was ended by force left on is restored "
            "by "
            "the next call.")
        .Example("quillon-agent run Audit.Hold subcategory=0cce922b-69ae-11d9-bed3-505054503030 seconds=60")
        .CreateParameter("subcategory", typeid(std::string))
        .Description("GUID of the sub-category; the example's is process creation.")
        .BindParameter()
        .CreateParameter("seconds", typeid(long long))
        .Description("How long; less when the agent is asked to end.")
        .OptionalValue(kDefaultSeconds)
        .BindParameter();
    AddColumn(builder, "Subcategory", typeid(std::string), "The sub-category that was held.");
    AddColumn(builder, "Seconds", typeid(long long), "The time that was asked for.");
}

}  // namespace

std::unique_ptr<IModule> MakeAuditModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Audit.Hold", IMethodMetadata::V5_0, &DescribeHold, &Hold));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
